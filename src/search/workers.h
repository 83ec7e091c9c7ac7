// The helpers of a master, as its search sees them.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brenquil {

/// The threads that search beside the master for the length of one search.
class IWorkers {
public:
    IWorkers() = default;
    IWorkers(const IWorkers&) = delete;
    IWorkers& operator=(const IWorkers&) = delete;
    virtual ~IWorkers() = default;

    /// Sets "Threads" minus 1 workers to search from this root.
    virtual void Start(const CPosition& root) = 0;

    /// Sum of the workers' node counters at this moment; they may still be running.
    [[nodiscard]] virtual std::uint64_t Nodes() const noexcept = 0;

    /// Stops all workers, waits for their threads and deletes them.
    virtual void Stop() noexcept = 0;
};

}  // namespace brenquil
