// What is left of guest.cpp without packages: ten static objects that enter a list and leave it again, and the same library
// linked.
#include <base/ininitmgr.h>

#include <list>

namespace
{
std::list<void const*>& registered()
{
    static std::list<void const*> objects;
    return objects;
}

class Plain
{
public:
    Plain() { registered().push_back(this); }
    Plain(Plain const&) = delete;
    Plain& operator=(Plain const&) = delete;
    ~Plain() { registered().remove(this); }
};

Plain objects[10];

[[maybe_unused]] bool const isLinked = Vn::InInitMgr::getInstance().isInitializing();
}  // namespace
