// Many threads, each with its own handles, sign, verify, encrypt, decrypt and
// secure SOAP messages at once over the shared engines, while other threads make
// and finish handles. Every result is checked. VQXML_STRESS_SECONDS sets how long
// the load runs (CI runs it long under ThreadSanitizer).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "stress/Workload.hpp"
#include "vqxml/vqxml.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWorkers = 8;
constexpr int kChurners = 2;
constexpr int kRoundsPerHandle = 16;

std::chrono::milliseconds loadDuration() {
    const char* text = std::getenv("VQXML_STRESS_SECONDS");
    const double seconds = text != nullptr ? std::atof(text) : 5.0;
    return std::chrono::milliseconds(static_cast<long>((seconds > 0 ? seconds : 5.0) * 1000));
}

// Failures seen by any thread: counted, and the first few kept for the report.
class Failures {
public:
    void add(const std::string& what) {
        if (what.empty())
            return;
        std::lock_guard<std::mutex> lock(mutex_);
        if (++count_ <= 10)
            first_.push_back(what);
    }
    int count() const { return count_; }
    std::string text() const {
        std::string all;
        for (const std::string& f : first_)
            all += f + "\n";
        return all;
    }

private:
    mutable std::mutex mutex_;
    int count_ = 0;
    std::vector<std::string> first_;
};

// Warms the lazily read test data so that no thread reads files.
void loadTestData() {
    stress::rsaSigner();
    stress::kcdsaSigner();
    stress::rsaRecipient();
    stress::taxInvoice();
}

// Makes a handle, loads a small document into it and finishes it, until stop.
void churnHandles(const std::atomic<bool>& stop, std::atomic<long>& made, Failures& failures) {
    char xml[] = "<a><b>1</b></a>";
    while (!stop.load()) {
        void* h = nullptr;
        if (VQTK_XMLAPI_init(&h) != 0) {
            failures.add("init failed");
            continue;
        }
        if (VQTK_XMLDSIG_SetXMLDocument(h, xml, sizeof xml - 1) != 0)
            failures.add("loading into a fresh handle failed");
        if (VQTK_XMLAPI_Finish(&h) != 0)
            failures.add("Finish failed");
        ++made;
    }
}

struct Load {
    long rounds = 0;
    long made = 0;
    double seconds = 0;
};

// Runs workers threads, each calling round(stop) until stop, beside kChurners
// threads making and finishing handles, for duration.
Load runLoad(int workers, std::chrono::milliseconds duration, Failures& failures,
             const std::function<void(const std::atomic<bool>&)>& round) {
    loadTestData();
    std::atomic<bool> stop{false};
    std::atomic<long> rounds{0};
    std::atomic<long> made{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < workers; ++i)
        threads.emplace_back([&] {
            while (!stop.load()) {
                round(stop);
                ++rounds;
            }
        });
    for (int i = 0; i < kChurners; ++i)
        threads.emplace_back([&] { churnHandles(stop, made, failures); });
    const auto start = Clock::now();
    std::this_thread::sleep_for(duration);
    stop.store(true);
    for (std::thread& t : threads)
        t.join();
    return {rounds.load(), made.load(), std::chrono::duration<double>(Clock::now() - start).count()};
}

TEST(ConcurrencyStress, SeparateHandlesShareTheEnginesCorrectly) {
    // One handle of the test's own keeps the engines up, as a long-lived
    // application would; the churners then only move the count.
    ScopedHandle anchor;
    Failures failures;
    const Load load = runLoad(kWorkers, loadDuration(), failures, [&](const std::atomic<bool>& stop) {
        stress::Workload work;
        for (int round = 0; round < kRoundsPerHandle && !stop.load(); ++round) {
            failures.add(work.signAndVerify(5, stress::rsaSigner()));
            failures.add(work.signAndVerify(3, stress::kcdsaSigner()));
            failures.add(work.encryptAndDecrypt(2, 2));
            failures.add(work.encryptAndDecrypt(1, 3));
            failures.add(work.secureAndProcessSoap());
        }
    });
    std::cout << "[ stress   ] " << kWorkers << " workers, " << load.seconds << " s: " << load.rounds
              << " runs of up to " << kRoundsPerHandle << " rounds on one pair of handles (each round 2 signatures, "
              << "3 encryptions, their checks and forgeries), " << load.made << " handles made and finished by "
              << kChurners << " other threads\n";
    EXPECT_EQ(failures.count(), 0) << failures.text();
    EXPECT_GE(load.rounds, kWorkers) << "every worker should finish at least one run";
}

// Here every thread finishes its handles after each round, so the count of live
// handles keeps falling to 0: the engines stop and start again while other
// threads are making handles or waiting for them.
TEST(ConcurrencyStress, EnginesRestartWhileOtherThreadsWork) {
    Failures failures;
    const Load load = runLoad(kWorkers / 2, loadDuration() / 4, failures, [&](const std::atomic<bool>&) {
        stress::Workload work;
        failures.add(work.signAndVerify(5, stress::rsaSigner()));
        failures.add(work.encryptAndDecrypt(2, 2));
    });
    std::cout << "[ stress   ] engine restarts: " << load.rounds << " short-lived worker rounds, " << load.made
              << " churned handles\n";
    EXPECT_EQ(failures.count(), 0) << failures.text();
    // All handles are gone: a new one must start the engines afresh and work.
    stress::Workload after;
    EXPECT_EQ(after.signAndVerify(5, stress::rsaSigner()), "");
}

}  // namespace
