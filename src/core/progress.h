// Progress of a long operation, and the wish that it should stop.
#pragma once

#include "core/exception.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Corvane {

// Shared by an OperationToken on the script's thread and the operation on a worker. The counters carry no
// lock: a reader may see a value that is one block old.
class Progress {
public:
    // Called when an operation starts. `total` is the amount of work; 0 counts as 1.
    void start(std::uint64_t total) noexcept {
        done_.store(0, std::memory_order_relaxed);
        total_.store(total == 0 ? 1 : total, std::memory_order_relaxed);
    }

    void add(std::uint64_t amount) noexcept { done_.fetch_add(amount, std::memory_order_relaxed); }

    void cancel() noexcept { canceled_.store(true, std::memory_order_relaxed); }
    bool isCanceled() const noexcept { return canceled_.load(std::memory_order_relaxed); }

    // Done work as a fraction, from 0 to 1.
    double fraction() const noexcept {
        const auto total = static_cast<double>(total_.load(std::memory_order_relaxed));
        const auto done = static_cast<double>(done_.load(std::memory_order_relaxed));
        return done < total ? done / total : 1.0;
    }

private:
    std::atomic<std::uint64_t> total_{1};
    std::atomic<std::uint64_t> done_{0};
    std::atomic<bool> canceled_{false};
};

// Null for an operation without a token, which cannot be canceled.
using SharedProgress = std::shared_ptr<Progress>;

}  // namespace Corvane
