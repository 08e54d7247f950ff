#pragma once

namespace vorund_ros {

/// Publishes on a latched topic, so that whoever subscribes meanwhile gets the message too: roscpp
/// notes what newcomers get only after it has sent the message to those who are there, and one
/// that connects in between would get neither. It has been noted by the second time.
template <class Publisher, class Message>
void publishLatched(const Publisher& publisher, const Message& message) {
    const auto subscribers = publisher.getNumSubscribers();
    publisher.publish(message);
    if (publisher.getNumSubscribers() != subscribers) publisher.publish(message);
}

}  // namespace vorund_ros
