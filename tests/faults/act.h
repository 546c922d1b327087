#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace VnTest
{

/// Something that a program does with the library, for trials in which memory or the system fails underneath.
///
/// Each trial has a process of its own, in which it makes an act:
///
///     prepare()      nothing fails
///     run()          fails once, or from a moment on
///     findFault()    looks at what that has left; the system works again
///     recover()      back to where run() can be called again
///     run()          works
///
/// Tests: tests/faults/allmemorytest.cpp, tests/faults/allcallstest.cpp.
class Act
{
public:
    virtual ~Act() = default;

    virtual void prepare() {}
    virtual void run() = 0;

    /// What is wrong behind run(), which has thrown or not; "" if nothing. "Lost", "torn" and "half" belong here.
    virtual std::string findFault([[maybe_unused]] bool hasThrown) { return ""; }

    virtual void recover() {}

    /// False for what a process does once: then the second run() is left out.
    virtual bool canBeRepeated() const { return true; }
};

struct NamedAct
{
    char const* name;
    std::function<std::unique_ptr<Act>()> make;
    bool makesCalls;  ///< of the system, but for memory
    std::vector<std::string_view> statedTexts =
        {};                         ///< how exceptions begin that have another text than the system's
    bool mayBeInterrupted = false;  ///< a signal that interrupts a call of another library makes the act fail
    long spareBlocks = 0;           ///< blocks that stay behind a failure alone, for a reason given with the act
};

/// In the order of the table of results.
std::vector<NamedAct> const& getActs();

/// Makes the C library load all that may know users, by a question that none can answer. It keeps that; and without memory for it
/// glibc 2.36 ends the process by itself, at the first question for a user's name.
void askAllNameServices();

// Each in the source of its subject.
void addStartActs(std::vector<NamedAct>& acts);
void addLogActs(std::vector<NamedAct>& acts);
void addFileActs(std::vector<NamedAct>& acts);
void addSystemActs(std::vector<NamedAct>& acts);
void addNumberActs(std::vector<NamedAct>& acts);

}  // namespace VnTest
