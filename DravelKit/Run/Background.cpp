#include "DravelKit/Run/Background.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>

namespace dravel {

// Shared with the threads: one that is left behind at quit must still find it.
struct ThreadedBackground::Jobs {
    struct Job {
        std::jthread thread;
        bool ended = false;
        bool awaited = false;         // by the main thread, which then needs no waking
        std::function<void()> result; // once it ended
    };

    explicit Jobs(MainLoop& mainLoop) : loop(mainLoop) {}

    std::mutex mutex;
    std::condition_variable someEnded;
    std::map<std::uint64_t, Job> running;
    std::uint64_t last = 0;
    bool quitting = false; // from then on the loop may be gone
    MainLoop& loop;

    // On the job's own thread, as the last thing it does.
    static void ended(const std::shared_ptr<Jobs>& jobs, std::uint64_t id, std::function<void()> result) {
        {
            const std::lock_guard lock(jobs->mutex);
            const auto job = jobs->running.find(id);
            const bool awaited = job != jobs->running.end() && job->second.awaited;
            if (job != jobs->running.end()) {
                job->second.ended = true;
                job->second.result = std::move(result);
            }
            if (!jobs->quitting && !awaited) {
                jobs->loop.post([weak = std::weak_ptr(jobs), id] {
                    if (const auto alive = weak.lock()) alive->collect(id);
                });
            }
        }
        jobs->someEnded.notify_all(); // who waits finds the lock free
    }

    // On the main thread: does what the job came to, once, unless the program is quitting.
    void collect(std::uint64_t id) {
        Job job;
        {
            const std::lock_guard lock(mutex);
            const auto found = running.find(id);
            if (quitting || found == running.end() || !found->second.ended) return;
            job = std::move(found->second);
            running.erase(found);
        }
        job.thread.detach(); // it has nothing left to do, not even to let go of what it held
        job.result();
    }
};

ThreadedBackground::ThreadedBackground(MainLoop& loop, std::chrono::milliseconds patience)
    : jobs_(std::make_shared<Jobs>(loop)), patience_(patience) {}

void ThreadedBackground::start(Work work, std::chrono::milliseconds patience) {
    std::unique_lock lock(jobs_->mutex);
    const auto id = ++jobs_->last;
    auto& job = jobs_->running[id];
    job.awaited = patience > patience.zero();
    job.thread = std::jthread([jobs = jobs_, id, work = std::move(work)](const std::stop_token& stop) mutable {
        auto result = std::exchange(work, {})(stop);
        Jobs::ended(jobs, id, std::move(result));
    });
    if (job.awaited) jobs_->someEnded.wait_for(lock, patience, [&] { return job.ended; });
    job.awaited = false;
    lock.unlock();
    jobs_->collect(id);
}

void ThreadedBackground::finish() {
    for (std::unique_lock lock(jobs_->mutex); !jobs_->running.empty(); lock.lock()) {
        const auto id = jobs_->running.begin()->first;
        jobs_->someEnded.wait(lock, [&] { return jobs_->running.at(id).ended; });
        lock.unlock();
        jobs_->collect(id);
    }
}

ThreadedBackground::~ThreadedBackground() {
    std::map<std::uint64_t, Jobs::Job> left;
    {
        std::unique_lock lock(jobs_->mutex);
        jobs_->quitting = true;
        for (auto& [id, job] : jobs_->running) job.thread.request_stop();
        jobs_->someEnded.wait_for(lock, patience_, [this] {
            return std::ranges::all_of(jobs_->running, [](const auto& entry) { return entry.second.ended; });
        });
        left.swap(jobs_->running);
    }
    for (auto& [id, job] : left) {
        if (!job.ended) job.thread.detach();
    }
}

}
