// The new child's record is complete before the assignment destroys the earlier one, so a start that throws leaves
// the earlier child in place. Destroying a record gives up the child and never ends it.
#include <base/osprocess.h>

#include <base/osprocess_p.h>

namespace Vn
{

// Here and not in the header, so that the class's table of virtual functions is in the library only.
OsProcessImp::~OsProcessImp() = default;

OsProcess::~OsProcess() = default;

void OsProcess::start(char const* const* argv)
{
    _imp = System::startProcess(argv);
}

void OsProcess::wait()
{
    // Without a child there is nothing to wait for, which is no error.
    if (_imp)
        _imp->wait();
}

}  // namespace Vn
