#include "crew.h"

#include <algorithm>

namespace Skylight
{

Crew::Crew(unsigned int size)
{
    try {
        for (unsigned int number = 1; number < size; ++number)
            _threads.emplace_back([this, number] { serve(number); });
    } catch (...) {
        end();
        throw;
    }
}

Crew::~Crew()
{
    end();
}

void Crew::end()
{
    {
        const std::lock_guard guard(_mutex);
        _isEnding = true;
    }
    _begins.notify_all();
    for (std::thread& thread : _threads)
        thread.join();
}

unsigned int Crew::getUsualSize()
{
    return std::clamp(std::thread::hardware_concurrency(), 1u, 64u);
}

void Crew::run(std::function<void(unsigned int)> const& task)
{
    {
        const std::lock_guard guard(_mutex);
        _task = &task;
        ++_tasks;
        _atWork = getSize() - 1;
    }
    _begins.notify_all();
    task(0);
    std::unique_lock guard(_mutex);
    _isDone.wait(guard, [this] { return _atWork == 0; });
}

void Crew::serve(unsigned int number)
{
    unsigned int done = 0;
    std::unique_lock guard(_mutex);
    for (;;) {
        _begins.wait(guard, [&] { return _isEnding || _tasks != done; });
        if (_isEnding)
            return;
        done = _tasks;
        guard.unlock();
        (*_task)(number);
        guard.lock();
        if (--_atWork == 0)
            _isDone.notify_one();
    }
}

}  // namespace Skylight
