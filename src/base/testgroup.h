#pragma once

#include <base/baseexport.h>

#include <iosfwd>

namespace Vn
{

/// A part of a test program that is called by its name. Each is a static object, and TestMgr::runTest() is the whole
/// `main`:
///
///     class Sorting : public Vn::TestGroup
///     {
///     public:
///         Sorting() : TestGroup("sorting") { setUsage("COUNT"); }
///         void execute(int argc, char** const argv) override { ...; }
///     } sorting;
///
///     int main(int argc, char** argv) { return Vn::TestMgr::runTest(argc, argv); }
///
/// All output goes through trace at the level "Main". One thread. A group that is destroyed stays registered: groups
/// outlive the run.
/// Tests: tests/base/testgrouptest.cpp.
class VN_BASE_EXPORT TestGroup
{
public:
    /// Frees the texts. The group stays in the registry, so nothing may look groups up afterwards.
    virtual ~TestGroup();

    /// Before execute(), neither measured nor checked for leaks. Does nothing unless overridden.
    virtual void prepare(int argc, char** const argv);

    /// The body, which is measured. What it throws is a failure of the run.
    virtual void execute(int argc, char** const argv) = 0;

    /// After an execute() that didn't throw; as prepare().
    virtual void terminate();

    /// What a performance run shall show after each cycle. Nothing unless overridden.
    virtual void dump(std::ostream& stream);

    /// Null for a group without a name.
    char const* getName() const;

    /// @{
    /// What setPrintHeaders() and setGroupNameInArgs() have set; true and false at first.
    bool getPrintHeaders() const;
    bool getGroupNameInArgs() const;
    /// @}

    /// The first registered group of that name; null if there is none, and for null.
    static TestGroup* getInstance(char const* name);

    /// Lists the groups in the order of their construction, and the levels of trace.
    static void printInstances();

    /// Traces the name between stars, with a line before and behind.
    static void caseHeader(char const* name);

    /// Traces the text in brackets, with a line before and behind.
    static void log(char const* text);

    /// Whether the program's file name holds ".pixie".
    static bool isPixified();

protected:
    /// Registers the group. Throws as setName().
    explicit TestGroup(char const* name = nullptr);

    /// @{
    /// Copies share the texts, which the first one that is destroyed frees; they aren't registered, and no group is
    /// made like that.
    TestGroup(TestGroup const&) = default;
    TestGroup& operator=(TestGroup const&) = default;
    /// @}

    /// Throws ExInternalError ("Duplicate test group : ...") if a registered group has that name; there is then none.
    /// In a static constructor that ends the program. Null clears it.
    void setName(char const* name);

    /// @{
    /// One line on the arguments, as "COUNT [SEED]", and any text; both are copied and shown by the driver's help.
    /// Null clears them.
    void setUsage(char const* usage);
    void setDescription(char const* description);
    /// @}

    /// Whether the driver heads and ends this group's output. It does unless told.
    void setPrintHeaders(bool printHeaders);

    /// Whether the arguments start with the group's name, as a program's do. They don't unless told.
    void setGroupNameInArgs(bool groupNameInArgs);

private:
    friend class TestMgr;

    static void setIsPixified(bool isPixified);

    char* _name;  ///< owned, as are the others; null if there is none
    char* _usage;
    char* _description;
    bool _printHeaders;
    bool _groupNameInArgs;

    static bool _isPixified;
};

}  // namespace Vn
