#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Skylight
{

/// Threads that do one task after another together, the calling thread among them. They stay from task to task, so each has one
/// lane in the log.
class Crew
{
public:
    /// `size` counts the calling thread; 1 makes no other. Throws std::system_error if a thread can't be made.
    explicit Crew(unsigned int size);
    ~Crew();

    Crew(Crew const&) = delete;
    Crew& operator=(Crew const&) = delete;

    /// As many threads as the machine runs at once, 64 at most.
    static unsigned int getUsualSize();

    unsigned int getSize() const { return static_cast<unsigned int>(_threads.size()) + 1; }

    /// Calls `task` with 0 to getSize() - 1, each in a thread of its own, 0 in the calling one, and waits for all. `task` must not
    /// throw.
    void run(std::function<void(unsigned int)> const& task);

private:
    void serve(unsigned int number);
    void end();

    std::mutex _mutex;
    std::condition_variable _begins, _isDone;
    std::function<void(unsigned int)> const* _task = nullptr;
    unsigned int _tasks = 0;   ///< given out so far
    unsigned int _atWork = 0;  ///< threads that haven't finished the last one
    bool _isEnding = false;
    std::vector<std::thread> _threads;
};

}  // namespace Skylight
