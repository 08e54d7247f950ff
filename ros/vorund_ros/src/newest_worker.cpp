#include "newest_worker.h"

#include <utility>
#include <vector>

namespace vorund_ros {
namespace {

std::size_t indexOf(NewestWorker::Source source) {
    return static_cast<std::size_t>(source);
}

}  // namespace

NewestWorker::NewestWorker(int most_cancelled)
    : most_cancelled_(most_cancelled), thread_([this] { loop(); }) {}

NewestWorker::~NewestWorker() {
    stop();
}

NewestWorker::Ticket NewestWorker::newTicket() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return ++last_ticket_;
}

void NewestWorker::submit(Ticket ticket, Source source, Task task) {
    std::function<void()> drop;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_) {
            drop = std::move(task.drop);
        } else {
            makeWay(source);
            std::optional<Entry>& place = waiting_[indexOf(source)];
            if (place) drop = std::move(place->task.drop);
            place =
                Entry{ticket, source, std::move(task), std::make_shared<std::atomic<bool>>(false)};
        }
    }
    changed_.notify_one();
    if (drop) drop();
}

void NewestWorker::makeWay(Source source) {
    if (!running_ || running_->source != source || *running_->cancelled) return;
    int& in_row = cancelled_in_row_[indexOf(source)];
    if (in_row >= most_cancelled_) return;
    ++in_row;
    *running_->cancelled = true;
}

template <class Condition>
void NewestWorker::cancelIf(const Condition& condition) {
    std::vector<std::function<void()>> drops;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (std::optional<Entry>& entry : waiting_) {
            if (!entry || !condition(*entry)) continue;
            drops.push_back(std::move(entry->task.drop));
            entry.reset();
        }
        if (running_ && condition(*running_)) *running_->cancelled = true;
    }
    for (const std::function<void()>& drop : drops) {
        if (drop) drop();
    }
}

void NewestWorker::cancel(Ticket ticket) {
    cancelIf([ticket](const Entry& entry) { return entry.ticket == ticket; });
}

void NewestWorker::cancel(Source source) {
    cancelIf([source](const Entry& entry) { return entry.source == source; });
}

void NewestWorker::stop() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    cancelIf([](const Entry&) { return true; });
    changed_.notify_one();
    if (thread_.joinable()) thread_.join();
}

bool NewestWorker::hasWaiting() const {
    for (const std::optional<Entry>& entry : waiting_) {
        if (entry) return true;
    }
    return false;
}

NewestWorker::Entry NewestWorker::takeOldest() {
    std::optional<Entry>* oldest = nullptr;
    for (std::optional<Entry>& entry : waiting_) {
        if (entry && (!oldest || entry->ticket < (*oldest)->ticket)) oldest = &entry;
    }
    Entry taken = std::move(**oldest);
    oldest->reset();
    return taken;
}

void NewestWorker::loop() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stopping_ || hasWaiting(); });
        if (stopping_) return;
        Entry entry = takeOldest();
        running_ = Entry{entry.ticket, entry.source, {}, entry.cancelled};
        lock.unlock();
        entry.task.run(*entry.cancelled);
        entry.task = {};  // What the task holds is let go without the lock.
        lock.lock();
        if (!*entry.cancelled) cancelled_in_row_[indexOf(entry.source)] = 0;
        running_.reset();
    }
}

}  // namespace vorund_ros
