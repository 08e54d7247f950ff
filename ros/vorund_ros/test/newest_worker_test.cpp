#include "newest_worker.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <string>
#include <vector>

namespace vorund_ros {
namespace {

using ::testing::ElementsAre;
using Source = NewestWorker::Source;

constexpr int kMostCancelled = 2;

/// What happened, in order; tasks that wait to be let go, or to be cancelled.
class Log {
 public:
    void note(const std::string& what) {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(what);
        changed_.notify_all();
    }
    void waitFor(const std::string& what) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(
            lock, [&] { return std::find(events_.begin(), events_.end(), what) != events_.end(); });
    }
    std::vector<std::string> events() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> events_;
};

NewestWorker::Task quick(Log& log, const std::string& name) {
    return {[&log, name](const auto&) { log.note(name + " ran"); },
            [&log, name] { log.note(name + " dropped"); }};
}

/// Runs until it is told to stop.
NewestWorker::Task endless(Log& log, const std::string& name) {
    return {[&log, name](const std::atomic<bool>& cancelled) {
                log.note(name + " begun");
                while (!cancelled) std::this_thread::yield();
                log.note(name + " cancelled");
            },
            [&log, name] { log.note(name + " dropped"); }};
}

/// Runs until the promise is kept, whatever it is told, and notes what that was.
NewestWorker::Task until(Log& log, const std::string& name, std::shared_future<void> end) {
    return {[&log, name, end = std::move(end)](const std::atomic<bool>& cancelled) {
                log.note(name + " begun");
                end.wait();
                log.note(name + (cancelled ? " cancelled" : " ended"));
            },
            {}};
}

TEST(NewestWorker, RunsTasksOfSeveralSourcesInTheirOrder) {
    Log log;
    std::promise<void> end;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kAction, until(log, "first", end.get_future().share()));
    log.waitFor("first begun");
    worker.submit(Source::kService, quick(log, "service"));
    worker.submit(Source::kMap, quick(log, "map"));
    end.set_value();
    log.waitFor("map ran");
    EXPECT_THAT(log.events(), ElementsAre("first begun", "first ended", "service ran", "map ran"));
}

TEST(NewestWorker, StopsWhatRunsForANewerTaskOfItsSource) {
    Log log;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kMap, endless(log, "old"));
    log.waitFor("old begun");
    worker.submit(Source::kMap, quick(log, "new"));
    log.waitFor("new ran");
    EXPECT_THAT(log.events(), ElementsAre("old begun", "old cancelled", "new ran"));
}

TEST(NewestWorker, KeepsTheNewestAloneWaiting) {
    Log log;
    std::promise<void> end;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kAction, until(log, "other", end.get_future().share()));
    log.waitFor("other begun");
    for (const char* const name : {"one", "two", "three"}) {
        worker.submit(Source::kMap, quick(log, name));
    }
    end.set_value();
    log.waitFor("three ran");
    EXPECT_THAT(log.events(), ElementsAre("other begun", "one dropped", "two dropped",
                                          "other ended", "three ran"));
}

TEST(NewestWorker, LetsARunEndAfterSomeWereStoppedInARow) {
    Log log;
    std::promise<void> end;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kMap, endless(log, "1"));
    log.waitFor("1 begun");
    worker.submit(Source::kMap, endless(log, "2"));
    log.waitFor("2 begun");
    worker.submit(Source::kMap, until(log, "3", end.get_future().share()));
    log.waitFor("3 begun");
    worker.submit(Source::kMap, endless(log, "4"));
    worker.submit(Source::kMap, endless(log, "5"));
    end.set_value();
    log.waitFor("5 begun");
    worker.submit(Source::kMap, quick(log, "6"));  // Counted anew.
    log.waitFor("6 ran");
    EXPECT_THAT(log.events(),
                ElementsAre("1 begun", "1 cancelled", "2 begun", "2 cancelled", "3 begun",
                            "4 dropped", "3 ended", "5 begun", "5 cancelled", "6 ran"));
}

TEST(NewestWorker, CancelsByTicketWhatWaitsAndWhatRuns) {
    Log log;
    NewestWorker worker(kMostCancelled);
    const NewestWorker::Ticket running = worker.newTicket();
    const NewestWorker::Ticket waiting = worker.newTicket();
    worker.submit(running, Source::kMap, endless(log, "running"));
    log.waitFor("running begun");
    worker.submit(waiting, Source::kAction, quick(log, "waiting"));
    worker.cancel(waiting);
    worker.cancel(running);
    log.waitFor("running cancelled");
    worker.cancel(running);  // Has ended: nothing.
    EXPECT_THAT(log.events(), ElementsAre("running begun", "waiting dropped", "running cancelled"));
}

TEST(NewestWorker, CancelsAllOfASourceAndNothingElse) {
    Log log;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kMap, endless(log, "map"));
    log.waitFor("map begun");
    worker.submit(Source::kService, quick(log, "service"));
    worker.cancel(Source::kMap);
    log.waitFor("service ran");
    EXPECT_THAT(log.events(), ElementsAre("map begun", "map cancelled", "service ran"));
}

TEST(NewestWorker, StopsAndDropsEverythingAtTheEnd) {
    Log log;
    NewestWorker worker(kMostCancelled);
    worker.submit(Source::kMap, endless(log, "running"));
    log.waitFor("running begun");
    worker.submit(Source::kAction, quick(log, "waiting"));
    worker.stop();
    worker.submit(Source::kMap, quick(log, "late"));
    EXPECT_THAT(log.events(), ElementsAre("running begun", "waiting dropped", "running cancelled",
                                          "late dropped"));
}

}  // namespace
}  // namespace vorund_ros
