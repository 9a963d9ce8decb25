#include "tools/ordered_jobs.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quorvane::tool {
namespace {

TEST(OrderedJobs, DeliverInOrder) {
    for (const std::size_t threads : {0U, 1U, 2U, 5U}) {
        std::vector<int> delivered;  // by one thread at a time
        OrderedJobs<int> jobs(
            threads,
            [](std::size_t /*thread*/, int& job) {
                // Some take long.
                std::this_thread::sleep_for(std::chrono::microseconds(job % 7 * 20));
                job = -job;
            },
            [&](std::size_t /*thread*/, int& job) { delivered.push_back(job); });
        for (int job = 0; job < 500; ++job) {
            jobs.Submit(job);
        }
        jobs.Finish();
        ASSERT_EQ(delivered.size(), 500U);
        for (int job = 0; job < 500; ++job) {
            EXPECT_EQ(delivered[static_cast<std::size_t>(job)], -job);
        }
        jobs.Submit(1);
        jobs.Finish();
        EXPECT_EQ(delivered.back(), -1);
    }
}

TEST(OrderedJobs, HoldFewJobs) {
    std::atomic<int> held = 0;
    std::atomic<int> most = 0;
    constexpr int kThreads = 3;
    OrderedJobs<int> jobs(
        kThreads, [](std::size_t /*thread*/, int& /*job*/) {},
        [&](std::size_t /*thread*/, int& /*job*/) {
            std::this_thread::yield();
            --held;
        });
    for (int job = 0; job < 300; ++job) {
        most = std::max(most.load(), ++held);
        jobs.Submit(job);
    }
    jobs.Finish();
    EXPECT_LE(most, 2 * kThreads + 1);  // and the one that waits
}

TEST(OrderedJobs, HandOnWhatAStepThrows) {
    for (const bool early : {true, false}) {
        std::vector<int> delivered;
        {
            OrderedJobs<int> jobs(
                3,
                [&](std::size_t /*thread*/, int& job) {
                    if (early && job == 20) {
                        throw std::runtime_error("work");
                    }
                },
                [&](std::size_t /*thread*/, int& job) {
                    if (!early && job == 20) {
                        throw std::runtime_error("delivery");
                    }
                    delivered.push_back(job);
                });
            const auto submitAll = [&] {
                for (int job = 0; job < 100; ++job) {
                    jobs.Submit(job);
                }
                jobs.Finish();
            };
            EXPECT_THROW(submitAll(), std::runtime_error);
            EXPECT_THROW(jobs.Finish(), std::runtime_error);
        }
        // What was being delivered has ended.
        EXPECT_LE(delivered.size(), 20U);
        for (std::size_t index = 0; index < delivered.size(); ++index) {
            EXPECT_EQ(delivered[index], static_cast<int>(index));
        }
    }
}

TEST(OrderedJobs, EndWithoutFinish) {
    std::atomic<int> delivered = 0;
    {
        OrderedJobs<int> jobs(
            2, [](std::size_t /*thread*/, int& /*job*/) {},
            [&](std::size_t /*thread*/, int& /*job*/) { ++delivered; });
        for (int job = 0; job < 10; ++job) {
            jobs.Submit(job);
        }
    }
    EXPECT_LE(delivered, 10);
}

}  // namespace
}  // namespace quorvane::tool
