#pragma once

// Jobs that run on several threads and end in order.
//
// Tests: tests/tool/ordered_jobs_test.cpp.

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace quorvane::tool {

/// How many threads `jobs` of a command line asks for; 0: one for each core.
inline unsigned ThreadsOf(unsigned jobs) {
    return jobs != 0 ? jobs : std::max(std::thread::hardware_concurrency(), 1U);
}

/// Each job is worked on by one of several threads, many jobs at once, and then delivered, one job
/// at a time, in the order in which they were submitted. The thread that submits is one of them: it
/// works, too, when four jobs are held for each of the others.
template <typename Job>
class OrderedJobs {
  public:
    /// What is done with a job by the thread of that number; 0 is the one that submits.
    using Work = std::function<void(std::size_t thread, Job& job)>;
    using Delivery = std::function<void(Job& job)>;

    /// `threads` counts the one that submits. Fewer run if there can be no more of them; where it
    /// is alone, Submit runs the job. New jobs are copies of `fresh`.
    OrderedJobs(std::size_t threads, Work work, Delivery deliver, Job fresh = {})
        : work_(std::move(work)), deliver_(std::move(deliver)), fresh_(std::move(fresh)) {
        for (std::size_t thread = 1; thread < threads; ++thread) {
            try {
                threads_.emplace_back([this, thread] { Run(thread); });
            } catch (const std::system_error&) {
                break;
            }
        }
    }
    OrderedJobs(const OrderedJobs&) = delete;
    OrderedJobs& operator=(const OrderedJobs&) = delete;

    /// Drops the jobs that no thread has begun.
    ~OrderedJobs() {
        {
            const std::scoped_lock lock(mutex_);
            ended_ = true;
        }
        work_or_end_.notify_all();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }

    /// Takes a job, and works or waits while there are too many. What it leaves in `job` is one
    /// that was delivered, for its memory, or a new one. Throws what work or delivery has thrown;
    /// no job is begun after that, and none behind that one delivered.
    void Submit(Job& job) {
        std::unique_lock lock(mutex_);
        ThrowFailure();
        held_.push_back({std::move(job), false});
        job = Spare();
        work_or_end_.notify_one();
        const std::size_t most = 4 * threads_.size();
        WorkUntil(lock, [this, most] { return held_.size() <= most; });
    }

    /// Waits until all jobs are delivered, and works on them. Throws as Submit does.
    void Finish() {
        std::unique_lock lock(mutex_);
        WorkUntil(lock, [this] { return held_.empty(); });
    }

  private:
    struct Held {
        Job job;
        bool done = false;  // and not delivered
    };
    using Lock = std::unique_lock<std::mutex>;

    [[nodiscard]] std::size_t Waiting() const { return held_.size() - begun_; }

    Job Spare() {
        if (spare_.empty()) {
            return fresh_;
        }
        Job job = std::move(spare_.back());
        spare_.pop_back();
        return job;
    }

    void ThrowFailure() {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

    template <typename Condition>
    void WorkUntil(Lock& lock, Condition condition) {
        while (!failure_ && !condition()) {
            if (Waiting() > 0) {
                RunJob(lock, 0);
            } else {
                progress_.wait(lock);
            }
        }
        ThrowFailure();
    }

    void Run(std::size_t thread) {
        Lock lock(mutex_);
        for (;;) {
            work_or_end_.wait(lock, [this] { return ended_ || failure_ || Waiting() > 0; });
            if (ended_ || failure_) {
                return;
            }
            RunJob(lock, thread);
        }
    }

    /// Runs the first job that waits, and delivers all that are done.
    void RunJob(Lock& lock, std::size_t thread) {
        Held& held = held_[begun_++];  // stays where it is until it is delivered
        lock.unlock();
        try {
            work_(thread, held.job);
            lock.lock();
            held.done = true;
            Deliver(lock);
        } catch (...) {
            if (!lock) {
                lock.lock();
            }
            failure_ = std::current_exception();
            work_or_end_.notify_all();
        }
        progress_.notify_one();
    }

    /// Unless another thread is at it, which goes on with what is done in the meantime.
    void Deliver(Lock& lock) {
        if (delivers_) {
            return;
        }
        delivers_ = true;
        while (!held_.empty() && held_.front().done) {
            Job& job = held_.front().job;
            lock.unlock();
            deliver_(job);
            lock.lock();
            spare_.push_back(std::move(job));
            held_.pop_front();
            --begun_;
        }
        delivers_ = false;
    }

    Work work_;
    Delivery deliver_;
    const Job fresh_;
    std::mutex mutex_;  // of what follows but the threads
    std::condition_variable work_or_end_;
    std::condition_variable progress_;  // for the thread that submits
    std::deque<Held> held_;             // in order
    std::size_t begun_ = 0;             // of those, from the front
    std::vector<Job> spare_;
    bool delivers_ = false;  // some thread
    std::exception_ptr failure_;
    bool ended_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace quorvane::tool
