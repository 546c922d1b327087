#include <base/objptr.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using Vn::ObjPtr;
using Vn::ObjPtrRet;

namespace
{
/// Writes its name into a log when it dies.
class Mourned
{
public:
    Mourned(std::string name, std::vector<std::string>& log) : _name(std::move(name)), _log(log) {}
    virtual ~Mourned() { _log.push_back(_name); }
    std::string const& getName() const { return _name; }

private:
    std::string _name;
    std::vector<std::string>& _log;
};

class Derived : public Mourned
{
public:
    explicit Derived(std::vector<std::string>& log) : Mourned("base", log), _log(log) {}
    ~Derived() override { _log.push_back("derived"); }

private:
    std::vector<std::string>& _log;
};

class ObjPtrTest : public testing::Test
{
protected:
    Mourned* make(char const* name) { return new Mourned(name, log); }
    ObjPtrRet<Mourned> result(char const* name) { return ObjPtrRet<Mourned>(make(name)); }

    std::vector<std::string> log;
};

using Log = std::vector<std::string>;
}  // namespace

static_assert(sizeof(ObjPtr<int>) == sizeof(int*) && sizeof(ObjPtrRet<int>) == sizeof(int*));
static_assert(!std::is_copy_constructible_v<ObjPtr<int>>, "a constant source can't give its object away");
static_assert(!std::is_convertible_v<int*, ObjPtr<int>>, "ownership is taken by name");

TEST_F(ObjPtrTest, defaultIsNull)
{
    EXPECT_EQ(ObjPtr<Mourned>().get(), nullptr);
    EXPECT_EQ(ObjPtrRet<Mourned>().get(), nullptr);
    EXPECT_FALSE(ObjPtr<Mourned>());
}

TEST_F(ObjPtrTest, deletesItsObjectOnce)
{
    {
        ObjPtr<Mourned> const pointer(make("a"));
        EXPECT_EQ(pointer->getName(), "a");
        EXPECT_EQ((*pointer).getName(), "a");
        EXPECT_TRUE(pointer);
    }
    EXPECT_EQ(log, Log{"a"});
}

TEST_F(ObjPtrTest, deletesThroughTheVirtualDestructor)
{
    {
        ObjPtr<Mourned> const pointer(new Derived(log));
    }
    EXPECT_EQ(log, (Log{"derived", "base"}));
}

TEST_F(ObjPtrTest, copyTransfersAndLeavesNull)
{
    {
        ObjPtr<Mourned> a(make("a"));
        Mourned* const object = a.get();
        {
            ObjPtr<Mourned> b = a;
            EXPECT_EQ(a.get(), nullptr);
            EXPECT_EQ(b.get(), object);
        }
        EXPECT_EQ(log, Log{"a"});
    }
    EXPECT_EQ(log, Log{"a"}) << "destroying the emptied source deletes nothing";
}

TEST_F(ObjPtrTest, assignmentDestroysTheOldObjectFirst)
{
    ObjPtr<Mourned> target(make("old"));
    ObjPtr<Mourned> source(make("new"));
    target = source;
    EXPECT_EQ(log, Log{"old"});
    EXPECT_EQ(source.get(), nullptr);
    EXPECT_EQ(target->getName(), "new");
}

TEST_F(ObjPtrTest, oldObjectDiesWhileTheSourceStillHoldsTheNewOne)
{
    class Watcher
    {
    public:
        Watcher(ObjPtr<Watcher>* source, bool& isStillThere) : _source(source), _isStillThere(isStillThere) {}
        ~Watcher()
        {
            if (_source != nullptr)
                _isStillThere = _source->get() != nullptr;
        }

    private:
        ObjPtr<Watcher>* _source;
        bool& _isStillThere;
    };
    bool isStillThere = false;
    ObjPtr<Watcher> source(new Watcher(nullptr, isStillThere));
    ObjPtr<Watcher> target(new Watcher(&source, isStillThere));
    target = source;
    EXPECT_TRUE(isStillThere);
}

TEST_F(ObjPtrTest, assignmentOfAResultDeletesTheHeldObjectFirstAndOnce)
{
    {
        ObjPtr<Mourned> target(make("old"));
        target = result("new");
        EXPECT_EQ(log, Log{"old"});
        EXPECT_EQ(target->getName(), "new");
    }
    EXPECT_EQ(log, (Log{"old", "new"}));
}

TEST_F(ObjPtrTest, selfAssignmentNeitherDeletesNorClears)
{
    ObjPtr<Mourned> pointer(make("a"));
    ObjPtr<Mourned>& same = pointer;
    pointer = same;
    EXPECT_TRUE(log.empty());
    ASSERT_NE(pointer.get(), nullptr);
    EXPECT_EQ(pointer->getName(), "a");

    ObjPtrRet<Mourned> ret = result("b");
    ObjPtrRet<Mourned>& sameRet = ret;
    ret = sameRet;
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(ret->getName(), "b");
}

TEST_F(ObjPtrTest, resultBecomesAnOwner)
{
    {
        ObjPtr<Mourned> pointer = result("a");
        ObjPtr<Mourned> constructed(result("b"));
        EXPECT_EQ(pointer->getName(), "a");
        EXPECT_EQ(constructed->getName(), "b");
        EXPECT_TRUE(log.empty());
    }
    EXPECT_EQ(log, (Log{"b", "a"}));
}

TEST_F(ObjPtrTest, unusedResultDeletesItsObjectAtTheEndOfTheExpression)
{
    result("a");
    EXPECT_EQ(log, Log{"a"});
}

TEST_F(ObjPtrTest, ownershipGoesBothWaysBetweenOwnerAndResult)
{
    ObjPtr<Mourned> owner(make("a"));
    ObjPtrRet<Mourned> ret(owner);
    EXPECT_EQ(owner.get(), nullptr);
    owner = ret;
    EXPECT_EQ(ret.get(), nullptr);
    ret = owner;
    EXPECT_EQ(owner.get(), nullptr);
    EXPECT_EQ(ret->getName(), "a");
    ret = ObjPtr<Mourned>(make("b"));
    EXPECT_EQ(log, Log{"a"});
    ObjPtrRet<Mourned> second(ret);
    EXPECT_EQ(ret.get(), nullptr);
    EXPECT_EQ(second->getName(), "b");
}

namespace
{
void ignore(ObjPtr<Mourned>) {}
void keep(ObjPtr<Mourned> given, ObjPtr<Mourned>& kept)
{
    kept = given;
}
}  // namespace

TEST_F(ObjPtrTest, parameterTakesTheObjectWhateverTheCalleeDoes)
{
    ObjPtr<Mourned> ignored(make("ignored"));
    ignore(ignored);
    EXPECT_EQ(ignored.get(), nullptr);
    EXPECT_EQ(log, Log{"ignored"});

    ObjPtr<Mourned> given(make("kept"));
    ObjPtr<Mourned> kept;
    keep(given, kept);
    EXPECT_EQ(given.get(), nullptr);
    EXPECT_EQ(kept->getName(), "kept");
    EXPECT_EQ(log, Log{"ignored"});
}

TEST_F(ObjPtrTest, releaseAndReset)
{
    ObjPtr<Mourned> pointer(make("a"));
    Mourned* const released = pointer.release();
    EXPECT_EQ(pointer.get(), nullptr);
    pointer.reset(released);
    pointer.reset(make("b"));
    EXPECT_EQ(log, Log{"a"});
    pointer.reset();
    EXPECT_EQ(log, (Log{"a", "b"}));
}
