#include "tools/ordered_jobs.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quorvane::tool {
namespace {

/// Until it holds, or ten seconds have passed.
template <typename Condition>
void WaitFor(Condition holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!holds() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

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
            [&](int& job) { delivered.push_back(job); });
        for (int number = 0; number < 500; ++number) {
            int job = number;
            jobs.Submit(job);
        }
        jobs.Finish();
        ASSERT_EQ(delivered.size(), 500U);
        for (int job = 0; job < 500; ++job) {
            EXPECT_EQ(delivered[static_cast<std::size_t>(job)], -job);
        }
        int job = 1;
        jobs.Submit(job);
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
        [&](int& /*job*/) {
            std::this_thread::yield();
            --held;
        });
    for (int number = 0; number < 300; ++number) {
        int job = number;
        most = std::max(most.load(), ++held);
        jobs.Submit(job);
    }
    jobs.Finish();
    EXPECT_LE(most, 4 * (kThreads - 1) + 1);  // and the one that waits
}

TEST(OrderedJobs, AreWorkedOnByTheThreadThatSubmitsToo) {
    std::atomic<bool> submitterWorked = false;
    OrderedJobs<int> jobs(
        2,
        [&](std::size_t thread, int& /*job*/) {
            if (thread == 0) {
                submitterWorked = true;
            }
            // The other thread's job is not done before this one has begun another.
            WaitFor([&] { return submitterWorked.load(); });
        },
        [](int& /*job*/) {});
    for (int number = 0; number < 10; ++number) {
        int job = number;
        jobs.Submit(job);
    }
    jobs.Finish();
    EXPECT_TRUE(submitterWorked);
}

TEST(OrderedJobs, GoOnWhileTheFirstTakesLong) {
    std::atomic<int> done = 0;
    std::atomic<bool> othersWentOn = false;
    std::vector<int> delivered;
    OrderedJobs<int> jobs(
        2,
        [&](std::size_t /*thread*/, int& job) {
            // The first job ends when two others have.
            if (job == 0) {
                WaitFor([&] { return done >= 2; });
                othersWentOn = done >= 2;
            }
            ++done;
        },
        [&](int& job) { delivered.push_back(job); });
    for (int number = 0; number < 6; ++number) {
        int job = number;
        jobs.Submit(job);
    }
    jobs.Finish();
    EXPECT_TRUE(othersWentOn);
    EXPECT_EQ(delivered, (std::vector{0, 1, 2, 3, 4, 5}));
}

TEST(OrderedJobs, ComeBackForTheirMemory) {
    for (const std::size_t threads : {1U, 3U}) {
        OrderedJobs<std::vector<int>> jobs(
            threads, [](std::size_t /*thread*/, std::vector<int>& /*job*/) {},
            [](std::vector<int>& job) { job[0] = 2; }, std::vector{1});
        int fresh = 0;
        for (int number = 0; number < 200; ++number) {
            std::vector<int> job(10);
            jobs.Submit(job);
            const bool isFresh = job == std::vector{1};
            fresh += isFresh ? 1 : 0;
            EXPECT_TRUE(isFresh || (job.size() == 10 && job[0] == 2)) << number;
        }
        EXPECT_GE(fresh, 1);
        EXPECT_LE(fresh, 4 * static_cast<int>(threads));
    }
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
                [&](int& job) {
                    if (!early && job == 20) {
                        throw std::runtime_error("delivery");
                    }
                    delivered.push_back(job);
                });
            const auto submitAll = [&] {
                for (int number = 0; number < 100; ++number) {
                    int job = number;
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

TEST(OrderedJobs, AreNotBegunBehindAFailure) {
    std::atomic<bool> allSubmitted = false;
    std::atomic<int> begunLater = 0;
    OrderedJobs<int> jobs(
        2,
        [&](std::size_t /*thread*/, int& job) {
            if (job == 0) {
                WaitFor([&] { return allSubmitted.load(); });
                throw std::runtime_error("work");
            }
            ++begunLater;
        },
        [](int& /*job*/) {});
    for (int number = 0; number < 4; ++number) {
        int job = number;
        jobs.Submit(job);
    }
    allSubmitted = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_THROW(jobs.Finish(), std::runtime_error);
    EXPECT_EQ(begunLater, 0);
}

TEST(OrderedJobs, EndWithoutFinish) {
    std::atomic<int> delivered = 0;
    {
        OrderedJobs<int> jobs(
            2, [](std::size_t /*thread*/, int& /*job*/) {}, [&](int& /*job*/) { ++delivered; });
        for (int number = 0; number < 10; ++number) {
            int job = number;
            jobs.Submit(job);
        }
    }
    EXPECT_LE(delivered, 10);
}

}  // namespace
}  // namespace quorvane::tool
