// A thread for long work, of which only the newest is wanted.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace vorund_ros {

/// Runs tasks on one thread of its own, one at a time. Of each source one task at most waits: a
/// newer one takes its place, and one of that source that runs is told to stop. Tasks of several
/// sources run in the order in which they came.
///
/// All functions may be called from any thread, but `stop` not from a task.
class NewestWorker {
 public:
    enum class Source : std::size_t { kMap, kService, kAction };
    using Ticket = std::uint64_t;

    struct Task {
        /// Runs on the worker's thread; throws nothing. To stop soon once the flag is set.
        std::function<void(const std::atomic<bool>& cancelled)> run;
        /// Called instead of `run` if the task is never begun, on the thread that is to blame.
        std::function<void()> drop;
    };

    /// @param most_cancelled  So many runs of a source in a row are told to stop for a newer task;
    ///                        the next one may end, so that something is finished however fast
    ///                        tasks come.
    explicit NewestWorker(int most_cancelled);
    ~NewestWorker();
    NewestWorker(const NewestWorker&) = delete;
    NewestWorker& operator=(const NewestWorker&) = delete;

    /// For a task to come, so that its ticket can be noted before it runs.
    Ticket newTicket();

    /// After `stop` the task is dropped at once.
    void submit(Ticket ticket, Source source, Task task);
    void submit(Source source, Task task) { submit(newTicket(), source, std::move(task)); }

    /// Drops a task that waits, tells one that runs to stop, passes over one that has ended.
    void cancel(Ticket ticket);
    /// Likewise, whatever there is of a source.
    void cancel(Source source);

    /// Drops what waits, tells what runs to stop, and joins the thread.
    void stop();

 private:
    struct Entry {
        Ticket ticket = 0;
        Source source = Source::kMap;
        Task task;
        std::shared_ptr<std::atomic<bool>> cancelled;
    };

    static constexpr std::size_t kSources = 3;

    template <class Condition>
    void cancelIf(const Condition& condition);
    bool hasWaiting() const;
    Entry takeOldest();
    void makeWay(Source source);
    void loop();

    const int most_cancelled_;
    std::mutex mutex_;  ///< Guards all that follows, save the thread.
    std::condition_variable changed_;
    std::array<std::optional<Entry>, kSources> waiting_;
    std::array<int, kSources> cancelled_in_row_{};
    std::optional<Entry> running_;  ///< Without its task.
    Ticket last_ticket_ = 0;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace vorund_ros
