#include <base/dbgapitable_p.h>
#include <base/dbgbuildinfoex.h>
#include <base/dbgbuildinfomgr.h>
#include <base/dbgbuildinfoutil.h>
#include <base/exinternalerror.h>
#include <base/incontextalias.h>
#include <base/invariable.h>
#include <base/lglog.h>
#include <base/ossharedlibex.h>

#include "buildinfo.h"
#include "expectchild.h"
#include "expectthrow.h"
#include "testpackage.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using Vn::DbgApiTable;
using Vn::DbgBuildInfo;
using Vn::DbgBuildInfoEx;
using Vn::DbgBuildInfoMgr;
using Vn::DbgBuildInfoUtil;
using Vn::ObjPtr;
using VnTest::BuildFacts;
using VnTest::BuildInfo;
using VnTest::Child;
using VnTest::ChildRun;
using VnTest::expectOutput;
using VnTest::ownedInfo;
using VnTest::report;

static_assert(std::is_abstract_v<DbgBuildInfo> && !std::has_virtual_destructor_v<DbgBuildInfo>);
static_assert(sizeof(DbgBuildInfo) == sizeof(void*));

extern "C" DbgBuildInfo* getBuildInfo();

namespace
{
// Two texts alike at two addresses.
const char api[] = "Api";
const char sameText[] = "Api";

const BuildFacts first{.api = api};
const BuildFacts alike{.api = api, .library = "libVNalike"};
const BuildFacts older{.api = api, .minorVersion = 1, .library = "libVNolder"};
const BuildFacts otherMajor{.api = api, .majorVersion = 2, .library = "libVNmajor"};
const BuildFacts otherStamp{.api = api, .library = "libVNstamp", .stamp = "P. 2"};
const BuildFacts otherLongStamp{.api = api, .library = "libVNlong", .longStamp = "Product_2"};
const BuildFacts otherBoth{.api = api, .minorVersion = 3, .library = "libVNboth", .stamp = "P. 3"};
const BuildFacts otherApi{.api = sameText, .majorVersion = 7, .library = "libVNother", .stamp = "P. 7"};
const BuildFacts application{.api = "Viewer", .minorVersion = 5, .status = "final"};

std::string printed(bool verbose)
{
    std::ostringstream stream;
    EXPECT_EQ(&DbgBuildInfoMgr::printBuildInfo(stream, verbose), &stream);
    return stream.str();
}

/// The lines of printBuildInfo() that come before and after those of this library's own API, which the child's start
/// has registered.
void printOthers()
{
    std::istringstream lines(printed(false));
    bool isOwn = false;
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '\t')
            isOwn = line.compare(0, 12, "API Tessola ") == 0;
        if (!isOwn)
            std::cout << line << "\n";
    }
}

/// Registers through the settings of the process; the object is not lost when it is refused, but handed back.
BuildInfo* registerInfo(BuildFacts const& facts)
{
    auto* const info = new BuildInfo(facts);
    try {
        DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>(info));
        std::cout << "registered\n";
        return nullptr;
    } catch (DbgBuildInfoEx const& refused) {
        std::cout << refused.getReason() << "\n";
        return info;
    }
}

/// That nobody has deleted what was refused shows when it is deleted here, under the address sanitizer.
void registerAndDeleteRefused(BuildFacts const& facts)
{
    if (BuildInfo* const refused = registerInfo(facts)) {
        std::cout << "still " << refused->getLibraryName(false) << "\n";
        destroyOwned(refused);
    }
}

void expectOutputWith(char const* body, std::vector<std::pair<std::string, std::string>> const& environment,
                      std::string const& out)
{
    Child child(body);
    child.without("VN_BUILDINFO_NO_VALIDATE").without("VN_BUILDINFO_CHECK_STAMPS").without("VN_LOG_GROUPS");
    for (auto const& [name, value] : environment)
        child.with(name, value);
    const ChildRun run = child.run();
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
}

constexpr char unknown[] = "Unknown application name / version.\n";
constexpr char versionReport[] =
    "BuildInfo Version mismatch, registering with API Api v1.2: library libVNolder using v1.1\n";
constexpr char versionReason[] = "Version mismatch, API 'Api' v1.2: library 'libVNolder' at v1.1.\n";
constexpr char stampReport[] =
    "BuildInfo Build stamp mismatch, registering with API Api build P. 1: library libVNstamp using  build P. 2\n";
constexpr char stampReason[] =
    "Build stamp mismatch, API 'Api' build P. 1: library 'libVNstamp' using build P. 2.\n";
}  // namespace

// ---- the table of APIs

TEST(DbgApiTable, spreadsNamesByTheirText)
{
    const struct
    {
        char const* name;
        std::uint32_t hash;
    } table[] = {
        {nullptr, 0},
        {"", 0},
        {"A", 65},
        {"AB", 65 * 5 + 66},
        {"Tessola", 1717787},
        {"\xFF", 0xFFFFFFFF},
        {"\xFF\x01", 0xFFFFFFFC},
        {"\x80z", 0xFFFFFDFA},
        {"A name that is long enough to wrap", 2608728430},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.hash);
        EXPECT_EQ(DbgApiTable::hash(row.name), row.hash);
    }
}

TEST(DbgApiTable, doublesItsBucketsWhenThereAreMoreApisThanBuckets)
{
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        names.push_back("api" + std::to_string(i));
    std::vector<BuildFacts> facts;
    for (std::string const& name : names)
        facts.push_back({.api = name.c_str()});

    DbgApiTable apis;
    EXPECT_EQ(apis.countBuckets(), 8u);
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(apis.find(names[i].c_str()), nullptr);
        ObjPtr<DbgBuildInfo> info(new BuildInfo(facts[i]));
        apis.add(names[i].c_str(), info);
        EXPECT_EQ(info.get(), nullptr);
        EXPECT_EQ(apis.countBuckets(), i < 8 ? 8u : i < 16 ? 16u : i < 32 ? 32u : 64u) << i;
    }
    for (std::string const& name : names) {
        ASSERT_NE(apis.find(name.c_str()), nullptr);
        EXPECT_EQ(apis.find(name.c_str())->front()->getApiName(), name.c_str());
        EXPECT_EQ(apis.find(std::string(name).c_str()), nullptr) << "another address";
    }
    std::uint32_t last = 0;
    int count = 0;
    apis.forEach([&](DbgApiTable::Infos const& infos) {
        const std::uint32_t bucket = DbgApiTable::hash(infos.front()->getApiName()) % 64;
        EXPECT_GE(bucket, last);
        last = bucket;
        ++count;
    });
    EXPECT_EQ(count, 40);
    apis.clear();
    EXPECT_EQ(apis.countBuckets(), 8u);
    apis.forEach([](DbgApiTable::Infos const&) { ADD_FAILURE(); });
}

// ---- registration and comparison

VN_CHILD(registerAlike)
{
    VnTest::start();
    for (BuildFacts const* facts : {&first, &alike, &otherStamp, &otherLongStamp})
        registerAndDeleteRefused(*facts);
    printOthers();
    const std::string verbose = printed(true);
    const std::size_t start = verbose.find("API Api ");
    std::cout << verbose.substr(start, verbose.find("API ", start + 1) - start);
    VnTest::stop();
    std::cout << printed(true) << BuildInfo::destructions << "\n";
    return 0;
}

TEST(DbgBuildInfoMgr, listsLibrariesOfOneApiInTheOrderOfTheirRegistration)
{
    const std::string verbose = "\tthe library (Product_1, August 27)\n\t\tBuilt by Ann Builder (Verbose build)\n";
    expectOutputWith("registerAlike", {},
                     "registered\nregistered\nregistered\nregistered\n" + std::string(unknown) +
                         "API Api 1.2 beta: \n"
                         "\tlibVNtest (P. 1, Aug 27)\n\tlibVNalike (P. 1, Aug 27)\n"
                         "\tlibVNstamp (P. 2, Aug 27)\n\tlibVNlong (P. 1, Aug 27)\n"
                         "API Api 1.2 beta: \n" +
                         verbose + verbose + verbose +
                         "\tthe library (Product_2, August 27)\n\t\tBuilt by Ann Builder (Verbose build)\n" +
                         unknown + "0\n");
}

VN_CHILD(registerOlder)
{
    VnTest::start();
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(older);
    registerAndDeleteRefused(otherMajor);
    registerAndDeleteRefused(alike);
    printOthers();
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, refusesAnotherVersionAndKeepsWhatItHas)
{
    expectOutputWith(
        "registerOlder", {},
        std::string("registered\n") + versionReport + versionReason + "still libVNolder\n" +
            "BuildInfo Version mismatch, registering with API Api v1.2: library libVNmajor using v2.2\n"
            "Version mismatch, API 'Api' v1.2: library 'libVNmajor' at v2.2.\n"
            "still libVNmajor\nregistered\n" +
            unknown + "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n\tlibVNalike (P. 1, Aug 27)\n");
}

TEST(DbgBuildInfoMgr, withoutValidationTellsOfAnotherVersionAndTakesIt)
{
    expectOutputWith(
        "registerOlder", {{"VN_BUILDINFO_NO_VALIDATE", "1"}},
        std::string("registered\n") + versionReport + "registered\n" +
            "BuildInfo Version mismatch, registering with API Api v1.2: library libVNmajor using v2.2\n"
            "registered\nregistered\n" +
            unknown +
            "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n\tlibVNolder (P. 1, Aug 27)\n"
            "\tlibVNmajor (P. 1, Aug 27)\n\tlibVNalike (P. 1, Aug 27)\n");
}

TEST(DbgBuildInfoMgr, reportsAtTheLowestThresholdToo)
{
    expectOutputWith(
        "registerOlder", {{"VN_BUILDINFO_NO_VALIDATE", "1"}, {"VN_LOG_GROUPS", "Base=Internal Error"}},
        std::string("registered\n") + versionReport + "registered\n" +
            "BuildInfo Version mismatch, registering with API Api v1.2: library libVNmajor using v2.2\n"
            "registered\nregistered\n" +
            unknown +
            "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n\tlibVNolder (P. 1, Aug 27)\n"
            "\tlibVNmajor (P. 1, Aug 27)\n\tlibVNalike (P. 1, Aug 27)\n");
}

VN_CHILD(registerStamp)
{
    VnTest::start();
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(otherStamp);
    registerAndDeleteRefused(otherLongStamp);
    printOthers();
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, comparesShortStampsOnRequest)
{
    const std::string listed = unknown + std::string("API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n");
    expectOutputWith("registerStamp", {},
                     "registered\nregistered\nregistered\n" + listed +
                         "\tlibVNstamp (P. 2, Aug 27)\n\tlibVNlong (P. 1, Aug 27)\n");
    expectOutputWith("registerStamp", {{"VN_BUILDINFO_CHECK_STAMPS", "1"}},
                     std::string("registered\n") + stampReport + stampReason + "still libVNstamp\nregistered\n" +
                         listed + "\tlibVNlong (P. 1, Aug 27)\n");
}

VN_CHILD(registerBoth)
{
    VnTest::start();
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(otherBoth);
    printOthers();
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, tellsOfTheVersionBeforeItRefusesTheStamp)
{
    expectOutputWith(
        "registerBoth", {{"VN_BUILDINFO_CHECK_STAMPS", "1"}, {"VN_BUILDINFO_NO_VALIDATE", "1"}},
        "registered\nBuildInfo Version mismatch, registering with API Api v1.2: library libVNboth using v1.3\n"
        "BuildInfo Build stamp mismatch, registering with API Api build P. 1: library libVNboth using  build P. 3\n"
        "Build stamp mismatch, API 'Api' build P. 1: library 'libVNboth' using build P. 3.\nstill libVNboth\n" +
            std::string(unknown) + "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n");
    // Refused for its version, its stamp is never looked at.
    expectOutputWith(
        "registerBoth", {{"VN_BUILDINFO_CHECK_STAMPS", "1"}},
        "registered\nBuildInfo Version mismatch, registering with API Api v1.2: library libVNboth using v1.3\n"
        "Version mismatch, API 'Api' v1.2: library 'libVNboth' at v1.3.\nstill libVNboth\n" +
            std::string(unknown) + "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n");
}

VN_CHILD(compareWithTheHead)
{
    VnTest::start();
    DbgBuildInfoMgr::registerInfo(ownedInfo(first), true, true);
    DbgBuildInfoMgr::registerInfo(ownedInfo(otherStamp), true, false);
    report("like the second", [] { DbgBuildInfoMgr::registerInfo(ownedInfo(alike), true, true); });
    DbgBuildInfoMgr::registerInfo(ownedInfo(older), false, false);
    report("like the first", [] { DbgBuildInfoMgr::registerInfo(ownedInfo(alike), true, true); });
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, comparesWithTheFirstOnly)
{
    expectOutputWith("compareWithTheHead", {},
                     std::string("like the second: ok\n") + versionReport + "like the first: ok\n");
}

VN_CHILD(registerOtherApi)
{
    VnTest::start();
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(otherApi);
    printOthers();
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, equalTextAtAnotherAddressIsAnotherApi)
{
    expectOutputWith("registerOtherApi", {{"VN_BUILDINFO_CHECK_STAMPS", "1"}},
                     "registered\nregistered\n" + std::string(unknown) +
                         "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n"
                         "API Api 7.2 beta: \n\tlibVNother (P. 7, Aug 27)\n");
}

// ---- reports through the logger

VN_CHILD(reportThroughTheLogger)
{
    VnTest::start();
    Vn::LgLog::setLoggerActivation(true);
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(older);
    DbgBuildInfoUtil::setCheckStamps(true);
    registerAndDeleteRefused(otherStamp);
    Vn::LgQueue& queue = Vn::LgLog::getQueue();
    for (; !queue.isEmpty(); queue.removeEntry()) {
        static char text[32768];
        queue.getStream() >> text;
        std::cout << Vn::LgTypes::levelToString(queue.readEntry().getLevel()) << ": " << text << "\n";
    }
    Vn::LgLog::setLoggerActivation(false);
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, reportsGoToTheQueueOfAnActiveLogger)
{
    expectOutputWith("reportThroughTheLogger", {},
                     std::string("registered\n") + versionReason + "still libVNolder\n" + stampReason +
                         "still libVNstamp\nFatal Error: " + versionReport + "Fatal Error: " + stampReport);
}

VN_CHILD(registerBeforeTheStart)
{
    registerAndDeleteRefused(first);
    registerAndDeleteRefused(older);
    DbgBuildInfoUtil::setCheckStamps(true);
    registerAndDeleteRefused(otherStamp);
    VnTest::start();
    printOthers();
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, withoutItsPackageRefusesSilently)
{
    expectOutputWith("registerBeforeTheStart", {},
                     std::string("registered\n") + versionReason + "still libVNolder\n" + stampReason +
                         "still libVNstamp\n" + unknown + "API Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n");
}

// ---- the application

VN_CHILD(applicationInfo)
{
    VnTest::start();
    report("none", [] { DbgBuildInfoMgr::getAppInfo(); });
    DbgBuildInfoMgr::printAppInfo(std::cout, true);
    DbgBuildInfoMgr::registerAppInfo(ownedInfo(application));
    std::cout << DbgBuildInfoMgr::getAppInfo().getApiName() << "\n";
    report("second", [] { DbgBuildInfoMgr::registerAppInfo(ownedInfo(first)); });
    std::cout << DbgBuildInfoMgr::getAppInfo().getApiName() << "\n";
    DbgBuildInfoMgr::printAppInfo(std::cout, false);
    DbgBuildInfoMgr::printAppInfo(std::cout, true);
    registerAndDeleteRefused(first);
    printOthers();
    std::cout << printed(true).substr(0, 77) << "\n";
    VnTest::stop();
    report("after", [] { DbgBuildInfoMgr::getAppInfo(); });
    return 0;
}

TEST(DbgBuildInfoMgr, knowsOneApplication)
{
    expectOutputWith("applicationInfo", {},
                     "none: No application-level build info available.\n" + std::string(unknown) +
                         "Viewer\nsecond: Application-level build info already registered.\nViewer\n"
                         "Viewer 1.5 final (P. 1, Aug 27)\n"
                         "Viewer 1.5 final (Product_1, August 27)\n\tBuilt by Ann Builder (Verbose build)\n"
                         "registered\n"
                         "Viewer 1.5 final (P. 1, Aug 27)\nAPI Api 1.2 beta: \n\tlibVNtest (P. 1, Aug 27)\n"
                         "Viewer 1.5 final (Product_1, August 27)\n\tBuilt by Ann Builder (Verbose build)\n"
                         "after: No application-level build info available.\n");
}

VN_CHILD(applicationIsNoLibrary)
{
    VnTest::start();
    DbgBuildInfoMgr::registerAppInfo(ownedInfo(older));
    registerAndDeleteRefused(first);
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, comparesNothingWithTheApplication)
{
    expectOutputWith("applicationIsNoLibrary", {{"VN_BUILDINFO_CHECK_STAMPS", "1"}}, "registered\n");
}

// ---- this library

VN_CHILD(ownInfo)
{
    VnTest::start();
    std::cout << printed(false) << "--\n" << printed(true);
    VnTest::stop();
    std::cout << "--\n" << printed(true);
    const ObjPtr<DbgBuildInfo> own(getBuildInfo());
    for (bool verbose : {false, true})
        std::cout << own->getLibraryName(verbose) << "|" << own->getBuildStamp(verbose) << "|"
                  << own->getBuildType(verbose) << "|" << own->getBuilder(verbose) << "\n";
    std::cout << own->getApiName() << "|" << own->getMajorVersion() << "|" << own->getMinorVersion() << "|"
              << own->getStatus() << "|" << own->getExtraInfo() << "\n";
    return 0;
}

TEST(DbgBuildInfoMgr, hasThisLibrarysOwnInfoWhileItIsUp)
{
    const std::string out = Child("ownInfo").run().out;
    const std::string date = "[A-Z][a-z]{2} [ 123][0-9] 20[0-9]{2}";
    const std::string type = "(Linux|Windows) [^ |]+ [A-Za-z]+";
    const std::string builder = "[^|\\n]+";
    const std::regex expected("Unknown application name / version\\.\nAPI Tessola 0\\.2 pre-alpha: \n"
                              "\tlibVNbase \\(P\\. 187, (" +
                              date +
                              ")\\)\n--\n"
                              "Unknown application name / version\\.\nAPI Tessola 0\\.2 pre-alpha: \n"
                              "\tlibVNbase \\(ProductNG-Tessola_187, \\1\\)\n\t\tBuilt by (" +
                              builder + ") \\((" + type +
                              ")\\)\n--\nUnknown application name / version\\.\n"
                              "libVNbase\\|P\\. 187\\|\\3\\|\\2\nlibVNbase\\|ProductNG-Tessola_187\\|\\3\\|\\2\n"
                              "Tessola\\|0\\|2\\|pre-alpha\\|\\[Information not available\\]\n");
    EXPECT_TRUE(std::regex_match(out, expected)) << out;
}

// ---- the settings

VN_CHILD(settingSources)
{
    auto const* const noValidate =
        Vn::InVariableBase::queryViaHandle("Vn::Tessola::debugging::buildInfoNoValidate");
    auto const* const checkStamps =
        Vn::InVariableBase::queryViaHandle("Vn::Tessola::debugging::buildInfoCheckStamps");
    for (int i = 1; i + 1 < argc; i += 2)
        Vn::InVariableBase::overrideViaHandle(argv[i], argv[i + 1], "test");
    VnTest::start();
    for (Vn::InVariableBase const* variable : {noValidate, checkStamps}) {
        const std::string source = variable->initSource();
        std::cout << (source == Vn::InContextAlias<Vn::InInitDef, 0>::initSourceString()   ? "default "
                      : source == Vn::InContextAlias<Vn::InInitEnv, 1>::initSourceString() ? "environment "
                      : source == Vn::InContextAlias<Vn::InInitOvr, 0>::initSourceString() ? "override "
                                                                                           : "? ");
        auto const& number = static_cast<Vn::InVariable<int> const&>(*variable);
        std::cout << number.getValue() << "\n";
    }
    const auto isTaken = [](BuildFacts const& facts) {
        auto* const info = new BuildInfo(facts);
        try {
            DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>(info));
            return true;
        } catch (DbgBuildInfoEx const&) {
            destroyOwned(info);
            return false;
        }
    };
    std::ostringstream swallowed;
    std::streambuf* const out = std::cout.rdbuf(swallowed.rdbuf());
    isTaken(first);
    const bool takesVersions = isTaken(older), takesStamps = isTaken(otherStamp);
    // What a program says beats all of them.
    DbgBuildInfoUtil::setValidateVersions(takesVersions);
    DbgBuildInfoUtil::setCheckStamps(takesStamps);
    const bool isTurned = isTaken(older) != takesVersions && isTaken(otherStamp) != takesStamps;
    std::cout.rdbuf(out);
    std::cout << takesVersions << takesStamps << isTurned << "\n";
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoUtil, settingsComeFromDefaultEnvironmentOverrideAndProgram)
{
    const std::string noValidate = "Vn::Tessola::debugging::buildInfoNoValidate";
    const std::string checkStamps = "Vn::Tessola::debugging::buildInfoCheckStamps";
    const struct
    {
        std::vector<std::string> overrides;
        char const* noValidate;
        char const* checkStamps;
        char const* out;
    } table[] = {
        {{}, nullptr, nullptr, "default 0\ndefault 0\n011\n"},
        {{}, "1", nullptr, "environment 1\ndefault 0\n111\n"},
        {{}, "0", "0", "environment 0\nenvironment 0\n011\n"},
        {{}, nullptr, "1", "default 0\nenvironment 1\n001\n"},
        {{}, "-1", "2", "environment -1\nenvironment 2\n101\n"},
        {{noValidate, "1", checkStamps, "0"}, "0", "1", "override 1\noverride 0\n111\n"},
        {{noValidate, "0", checkStamps, "1"}, "1", "0", "override 0\noverride 1\n001\n"},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.out);
        Child child("settingSources");
        child.arguments(row.overrides);
        child.without("VN_BUILDINFO_NO_VALIDATE").without("VN_BUILDINFO_CHECK_STAMPS");
        if (row.noValidate != nullptr)
            child.with("VN_BUILDINFO_NO_VALIDATE", row.noValidate);
        if (row.checkStamps != nullptr)
            child.with("VN_BUILDINFO_CHECK_STAMPS", row.checkStamps);
        EXPECT_EQ(child.run().out, row.out);
    }
}

// ---- bad input

VN_CHILD(strangeInfos)
{
    static const BuildFacts nothing{nullptr, INT_MIN, INT_MAX, nullptr, nullptr, nullptr, nullptr};
    static const BuildFacts negative{.api = nullptr, .majorVersion = -1, .minorVersion = -2};
    VnTest::start();
    DbgBuildInfoUtil::setCheckStamps(true);
    registerAndDeleteRefused(nothing);
    registerAndDeleteRefused(nothing);
    registerAndDeleteRefused(negative);
    DbgBuildInfoMgr::registerAppInfo(ObjPtr<DbgBuildInfo>());
    printOthers();
    report("null", [] { DbgBuildInfoUtil::registerInfo(ObjPtr<DbgBuildInfo>()); });
    report("no module", [] { DbgBuildInfoUtil::registerModule(nullptr); });
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoMgr, printsMissingTextsAsEmptyAndAnyVersion)
{
    const std::string out = Child("strangeInfos").run().out;
    const std::string expected =
        "registered\nregistered\n"
        "BuildInfo Version mismatch, registering with API  v-2147483648.2147483647: library libVNtest using "
        "v-1.-2\n"
        "Version mismatch, API '' v-2147483648.2147483647: library 'libVNtest' at v-1.-2.\nstill libVNtest\n" +
        std::string(unknown) +
        "API  -2147483648.2147483647 : \n\t (, Aug 27)\n\t (, Aug 27)\n"
        "null: Assertion 'info != 0' failed.\nno module: Can't open dynamic library 'libVN";
    EXPECT_EQ(out.substr(0, expected.size()), expected);
}

VN_CHILD(badModules)
{
    VnTest::start();
    for (char const* name : {"testnothing", "testtext", "testnoentry", "testnullinfo", "testthrowinginfo", "base"})
        report(name, [name] { DbgBuildInfoUtil::registerModule(name); });
    printOthers();
    const std::string own = printed(false);
    std::cout << own.substr(own.find("pre-alpha")).find("libVNbase", 20) << "\n";
    VnTest::stop();
    return 0;
}

TEST(DbgBuildInfoUtil, refusesModulesThatTellNothing)
{
#if defined(_WIN32)
    const std::string suffix = ".dll";
#else
    const std::string suffix = ".so";
#endif
    std::istringstream out(Child("badModules").run().out);
    const std::string expected[] = {
        "testnothing: Can't open dynamic library 'libVNtestnothing" + suffix + "': ",
        "testtext: Can't open dynamic library 'libVNtesttext" + suffix + "': ",
        "testnoentry: Function 'getBuildInfo' not found in dynamic library 'libVNtestnoentry" + suffix + "'.",
        "testnullinfo: Assertion 'info != 0' failed.",
        "testthrowinginfo: thrown by the library",
        "base: ok",
        "Unknown application name / version.",
    };
    std::string line;
    for (std::string const& start : expected) {
        // A text of the system may have several lines.
        while (std::getline(out, line) && line.find(": ") == std::string::npos && line.find("Unknown") != 0)
            continue;
        EXPECT_EQ(line.substr(0, start.size()), start);
    }
    std::getline(out, line);
    EXPECT_NE(line, std::to_string(std::string::npos)) << "registered twice, listed twice";
}

VN_CHILD(longModuleName)
{
    report("long", [] { DbgBuildInfoUtil::registerModule(std::string(5000, 'x').c_str()); });
    return 0;
}

TEST(DbgBuildInfoUtil, aLongModuleNameIsCutInTheMessage)
{
    const std::string start = "long: Can't open dynamic library 'libVN" + std::string(251, 'x') + "': ";
    EXPECT_EQ(Child("longModuleName").run().out.substr(0, start.size()), start);
}

TEST(DbgBuildInfoEx, messagesCutTheirTextsAt64Characters)
{
    using std::string;
    for (int more : {0, 1}) {
        const string longest(64, 'x');
        const string given(static_cast<std::size_t>(64 + more), 'x');
        char const* const text = given.c_str();
        EXPECT_EQ(string(DbgBuildInfoEx::ExVersionMismatch("src/base/x", 1, text, -1, 2, text, 3, -4).what()),
                  "Version mismatch, API '" + longest + "' v-1.2: library '" + longest + "' at v3.-4.");
        EXPECT_EQ(string(DbgBuildInfoEx::ExBuildStampMismatch("src/base/x", 1, text, text, text, text).what()),
                  "Build stamp mismatch, API '" + longest + "' build " + longest + ": library '" + longest +
                      "' using build " + longest + ".");
    }
    EXPECT_STREQ(DbgBuildInfoEx::ExVersionMismatch("f", 1, nullptr, 0, 0, nullptr, 0, 0).what(),
                 "Version mismatch, API '' v0.0: library '' at v0.0.");
    EXPECT_STREQ(DbgBuildInfoEx::ExBuildStampMismatch("f", 1, nullptr, nullptr, nullptr, nullptr).what(),
                 "Build stamp mismatch, API '' build : library '' using build .");
    VnTest::expectThrow<DbgBuildInfoEx::ExAppNotRegistered, std::runtime_error>(
        [] { DbgBuildInfoMgr::getAppInfo(); }, "No application-level build info available.");
}
