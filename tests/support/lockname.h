#pragma once

#include "tempfolder.h"

#include <base/lginterprocesslockname_p.h>

#include <string>

#if !defined(_WIN32)
#    include <unistd.h>
#endif

namespace VnTest
{

/// A name for an inter-process lock that no other test, and no other run of this one, has: that of the test's folder. What
/// the system keeps of the lock goes with it.
class LockName
{
public:
    explicit LockName(TempFolder const& folder, std::string const& end = "")
        : _name("test lock " + folder.path().substr(folder.path().find_last_of("/\\") + 1) + end)
    {}

#if !defined(_WIN32)
    ~LockName()
    {
        ::unlink(getFile().c_str());
    }

    /// The file behind the lock.
    std::string getFile() const
    {
        return "/tmp/vnbase-" + std::to_string(::geteuid()) + "-lock-" + Vn::getLockFileName(_name);
    }
#endif

    LockName(LockName const&) = delete;
    LockName& operator=(LockName const&) = delete;

    std::string const& get() const
    {
        return _name;
    }

private:
    std::string _name;
};

}  // namespace VnTest
