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

/// Each job is worked on by one of several threads, many jobs at once, and then delivered by the
/// same thread, one job at a time, in the order in which they were submitted. At most twice as many
/// jobs are held as there are threads.
template <typename Job>
class OrderedJobs {
  public:
    /// What is done with a job by the thread of that number, from 0.
    using Step = std::function<void(std::size_t thread, Job& job)>;

    /// Fewer threads run if there can be no more of them; without any, Submit runs the job.
    OrderedJobs(std::size_t threads, Step work, Step deliver)
        : work_(std::move(work)), deliver_(std::move(deliver)) {
        for (std::size_t thread = 0; thread < threads; ++thread) {
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
            waiting_.clear();
            ended_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }

    /// Takes a job, and waits ahead of that while there are too many. Throws what a step has
    /// thrown; no job is begun or delivered after that.
    void Submit(Job job) {
        if (threads_.empty()) {
            work_(0, job);
            deliver_(0, job);
            return;
        }
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return failure_ || waiting_.size() < threads_.size(); });
        ThrowFailure();
        waiting_.push_back(std::move(job));
        ++submitted_;
        lock.unlock();
        changed_.notify_all();
    }

    /// Waits until all jobs are delivered. Throws as Submit does.
    void Finish() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return failure_ || delivered_ == submitted_; });
        ThrowFailure();
    }

  private:
    void ThrowFailure() {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

    void Run(std::size_t thread) {
        try {
            while (RunJob(thread)) {
            }
        } catch (...) {
            const std::scoped_lock lock(mutex_);
            if (!failure_) {
                failure_ = std::current_exception();
            }
        }
        changed_.notify_all();
    }

    /// Waits for a job and runs it. False at the end.
    bool RunJob(std::size_t thread) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return failure_ || ended_ || !waiting_.empty(); });
        if (failure_ || waiting_.empty()) {
            return false;
        }
        Job job = std::move(waiting_.front());
        waiting_.pop_front();
        const std::uint64_t turn = begun_++;
        lock.unlock();
        changed_.notify_all();

        work_(thread, job);

        lock.lock();
        changed_.wait(lock, [this, turn] { return failure_ || delivered_ == turn; });
        if (failure_) {
            return false;
        }
        lock.unlock();
        deliver_(thread, job);  // nobody else has the turn
        lock.lock();
        ++delivered_;
        lock.unlock();
        changed_.notify_all();
        return true;
    }

    Step work_;
    Step deliver_;
    std::mutex mutex_;  // of what follows but the threads
    std::condition_variable changed_;
    std::deque<Job> waiting_;
    std::uint64_t submitted_ = 0;
    std::uint64_t begun_ = 0;
    std::uint64_t delivered_ = 0;
    std::exception_ptr failure_;
    bool ended_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace quorvane::tool
