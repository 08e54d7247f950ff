#include "map_requests.h"

#include <boost/make_shared.hpp>
#include <future>
#include <utility>

namespace vorund_ros {
namespace {

using Source = NewestWorker::Source;

/// Service response and action result have these in common.
template <class Message>
void fill(Message& message, const Outcome& outcome) {
    message.message = outcome.cause;
    if (!outcome.found) return;
    message.graph = outcome.found->graph;
    message.image = outcome.found->labels;
    message.rooms = toCells(*outcome.found);
}

Outcome notBegun() {
    Outcome outcome;
    outcome.cancelled = true;
    outcome.cause = "cancelled before it began";
    return outcome;
}

}  // namespace

MapRequests::MapRequests(const ros::NodeHandle& own, NewestWorker& worker,
                         std::function<Choices()> choices, std::string debug_directory)
    : worker_(worker),
      choices_(std::move(choices)),
      debug_directory_(std::move(debug_directory)),
      service_spinner_(1, &service_queue_),
      server_(
          own, "find_rooms", [this](Server::GoalHandle goal) { takeGoal(std::move(goal)); },
          [this](Server::GoalHandle goal) { cancelGoal(std::move(goal)); }, false) {
    ros::NodeHandle service_node(own);
    service_node.setCallbackQueue(&service_queue_);
    service_ = service_node.advertiseService("segment_map", &MapRequests::serve, this);
    service_spinner_.start();
    server_.start();
}

MapRequests::~MapRequests() {
    service_.shutdown();
    service_spinner_.stop();
}

bool MapRequests::serve(vorund_msgs::SegmentMap::Request& request,
                        vorund_msgs::SegmentMap::Response& response) {
    std::promise<Outcome> promise;
    std::future<Outcome> outcome = promise.get_future();
    worker_.submit(Source::kService, {[&](const std::atomic<bool>& cancelled) {
                                          promise.set_value(segment(request.map, choices_(),
                                                                    debug_directory_, cancelled));
                                      },
                                      [&promise] { promise.set_value(notBegun()); }});
    const Outcome found = outcome.get();
    response.success = found.found != nullptr;
    fill(response, found);
    return true;
}

void MapRequests::takeGoal(Server::GoalHandle goal) {
    const NewestWorker::Ticket ticket = worker_.newTicket();
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tickets_[goal.getGoalID().id] = ticket;
    }
    const auto run = [this, goal](const std::atomic<bool>& cancelled) { runGoal(goal, cancelled); };
    const auto drop = [this, goal]() mutable { endGoal(goal, notBegun()); };
    worker_.submit(ticket, Source::kAction, {run, drop});
}

void MapRequests::cancelGoal(Server::GoalHandle goal) {
    NewestWorker::Ticket ticket = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = tickets_.find(goal.getGoalID().id);
        if (found == tickets_.end()) return;
        ticket = found->second;
    }
    worker_.cancel(ticket);
}

void MapRequests::runGoal(Server::GoalHandle goal, const std::atomic<bool>& cancelled) {
    goal.setAccepted();
    const auto tell = [&goal](const Progress& progress) {
        vorund_msgs::FindRoomsFeedback feedback;
        feedback.stage = progress.stage;
        feedback.number = progress.number;
        feedback.stages = progress.stages;
        feedback.done = progress.done;
        feedback.total = progress.total;
        goal.publishFeedback(feedback);
    };
    endGoal(goal, segment(goal.getGoal()->map, choices_(), debug_directory_, cancelled, tell));
}

void MapRequests::endGoal(Server::GoalHandle& goal, const Outcome& outcome) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tickets_.erase(goal.getGoalID().id);
    }
    vorund_msgs::FindRoomsResult result;
    fill(result, outcome);
    if (outcome.found) {
        goal.setSucceeded(result);
    } else if (outcome.cancelled) {
        goal.setCanceled(result, outcome.cause);
    } else {
        goal.setAborted(result, outcome.cause);
    }
}

}  // namespace vorund_ros
