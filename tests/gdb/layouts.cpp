// Compiled for its debug information alone: the classes whose layouts debugger/libVNbase-gdb.py knows, as the compiler lays
// them out.
#include <base/exbase.h>
#include <base/ininitmgrstate_p.h>
#include <base/intable_p.h>
#include <base/invariable.h>
#include <base/lgregistry.h>
#include <threadlog/threadlogwriter_p.h>

#include <functional>
#include <map>
#include <string>

template class Vn::InTable<Vn::InTextKey, Vn::InVariableBase*>;
template class std::map<std::string, Vn::InContextAlias<Vn::InInitOvr, 0>*, std::less<>>;
template class std::list<Vn::LgQueue*>;

/// Names each class, so that none is left out of the debug information.
struct Layouts
{
    Vn::ExBase* exception;
    Vn::InInitMgr* manager;
    Vn::PackageEntry packageEntry;
    Vn::InPackageInit* package;
    Vn::InVariableBase* variable;
    Vn::InContextAlias<Vn::InInitEnv, 1>* alias;
    Vn::InTable<Vn::InTextKey, Vn::InVariableBase*> table;
    std::map<std::string, Vn::InContextAlias<Vn::InInitOvr, 0>*, std::less<>> overrides;
    Vn::LgQueue* queue;
    Vn::LgSimpleRegistry registry;
    Vn::ThreadLogWriter* writer;
    Vn::ThreadLogWriters* writers;
};
[[gnu::used]] static Layouts layouts;

/// Needs the classes complete, as some compilers describe only such.
struct Package : Vn::InPackageInit
{
    using InPackageInit::InPackageInit;
};
struct Variable : Vn::InVariable<int>
{
    using InVariable::InVariable;
};
struct Observer : Vn::LgQueue::Observer
{
    void entryAdded(Vn::LgQueue&) override {}
    void entryRemoved(Vn::LgQueue&) override {}
    void waitForSpace(Vn::LgQueue const&, int) override {}
};
[[gnu::used]] static Package* package;
[[gnu::used]] static Variable* variable;
[[gnu::used]] static Observer observer;
[[gnu::used]] static std::size_t sizeOfAll()
{
    return sizeof(*package) + sizeof(*variable);
}
