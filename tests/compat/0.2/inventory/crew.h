#pragma once

#include "reading.h"

#include <functional>
#include <string>
#include <vector>

namespace Inventory
{

/// Threads that read files side by side. Each logs through a queue of its own: what it has read, at the level
/// "Informational", and what it could not, at "Warning".
class Crew
{
public:
    struct Task
    {
        std::string name;
        std::string path;
    };

    struct Result
    {
        Reading reading;
        std::string failure;  ///< why the file wasn't read; empty if it was
    };

    /// As many threads as the machine runs at once, within reason.
    static unsigned getUsualSize();

    explicit Crew(unsigned threads) : _threads(threads) {}

    /// Reads all files; the results are in the order of the tasks. `onResult` hears of each, from one thread at a time.
    std::vector<Result> read(std::vector<Task> const& tasks,
                             std::function<void(Result const&)> const& onResult) const;

private:
    unsigned _threads;
};

}  // namespace Inventory
