#include "publish_latched.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace vorund_ros {
namespace {

using ::testing::ElementsAre;

/// What each subscriber got, by the order in which roscpp serves a latched topic: the message goes
/// to those who are there, then newcomers connect, then it is noted for the next ones.
class Topic {
 public:
    void connect() const {
        received_.emplace_back();
        if (noted_) received_.back().push_back(*noted_);
    }
    void connectDuringNextPublish() { newcomer_ = true; }

    std::size_t getNumSubscribers() const { return received_.size(); }
    void publish(int message) const {
        for (std::vector<int>& messages : received_) messages.push_back(message);
        if (newcomer_) connect();
        newcomer_ = false;
        noted_ = message;
    }

    const std::vector<std::vector<int>>& received() const { return received_; }

 private:
    mutable std::vector<std::vector<int>> received_;
    mutable std::optional<int> noted_;
    mutable bool newcomer_ = false;
};

TEST(PublishLatched, SendsOnceToThoseWhoAreThere) {
    Topic topic;
    topic.connect();
    publishLatched(topic, 1);
    topic.connect();
    EXPECT_THAT(topic.received(), ElementsAre(ElementsAre(1), ElementsAre(1)));
}

TEST(PublishLatched, ReachesTheFirstSubscriberWhichConnectsMeanwhile) {
    Topic topic;
    topic.connectDuringNextPublish();
    publishLatched(topic, 1);
    EXPECT_THAT(topic.received(), ElementsAre(ElementsAre(1)));
}

TEST(PublishLatched, LeavesNobodyWithTheMessageBefore) {
    Topic topic;
    topic.connect();
    publishLatched(topic, 1);
    topic.connectDuringNextPublish();
    publishLatched(topic, 2);
    EXPECT_THAT(topic.received(), ElementsAre(ElementsAre(1, 2, 2), ElementsAre(1, 2)));
}

}  // namespace
}  // namespace vorund_ros
