#include <base/osprocess.h>

#include <base/osprocess_p.h>

namespace Vn
{

OsProcessImp::~OsProcessImp() = default;

OsProcess::~OsProcess() = default;

void OsProcess::start(char const* const* argv)
{
    _imp = System::startProcess(argv);
}

void OsProcess::wait()
{
    if (_imp)
        _imp->wait();
}

}  // namespace Vn
