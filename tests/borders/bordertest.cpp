// Two real libraries beside the program: one linked, one loaded while it runs. Every body runs in a process of its own.
#include "library.h"
#include "linked.h"

#include "expectchild.h"
#include "testpackage.h"

#include <base/ininitmgr.h>

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

using VnTest::expectOutput;
using VnTest::Library;

namespace
{
constexpr char loadedName[] = "VNtestloaded";

void printClients()
{
    std::ostringstream text;
    Vn::InInitMgr::getInstance().dump(text);
    std::cout << text.str().substr(text.str().find("\t'testLinked'"));
}
}  // namespace

VN_CHILD(linkedAlone)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    printClients();
    return 0;
}

TEST(Borders, linkedLibraryStartsWithTheProgram)
{
    expectOutput("linkedAlone",
                 "start testLinked\n\t'testLinked' Initialized (13 dependencies)\nstop testLinked\n");
}

VN_CHILD(loadedLater)
{
    char const* const* arguments = argv;
    std::optional<Library> library;
    Vn::InInitGuard guard(argc, arguments);
    {
        Vn::InReinitGuard reinit;
        library.emplace(loadedName);
        std::cout << "loaded" << std::endl;
    }
    printClients();
    return 0;
}

TEST(Borders, loadedLibraryStartsUnderTheGuardAndTheCommonPackageRunsOnce)
{
    expectOutput("loadedLater", "start testLinked\nloaded\nstart testLoaded\n"
                                "\t'testLinked' Initialized (13 dependencies)\n"
                                "\t'testLoaded' Initialized (0 dependencies)\n"
                                "stop testLoaded\nstop testLinked\n");
}

VN_CHILD(loadedFirst)
{
    const Library library(loadedName);
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    printClients();
    return 0;
}

TEST(Borders, libraryLoadedBeforeTheStartIsPartOfIt)
{
    expectOutput("loadedFirst", "start testLinked\nstart testLoaded\n"
                                "\t'testLinked' Initialized (13 dependencies)\n"
                                "\t'testLoaded' Initialized (14 dependencies)\n"
                                "stop testLoaded\nstop testLinked\n");
}

VN_CHILD(unloadedWhileRunning)
{
    char const* const* arguments = argv;
    Vn::InInitGuard guard(argc, arguments);
    {
        std::optional<Library> library;
        {
            Vn::InReinitGuard reinit;
            library.emplace(loadedName);
        }
        std::cout << "unloading" << std::endl;
    }
    printClients();
    return 0;
}

TEST(Borders, unloadedLibraryLeavesTheManager)
{
    expectOutput("unloadedWhileRunning", "start testLinked\nstart testLoaded\nunloading\n"
                                         "\t'testLinked' Initialized (13 dependencies)\nstop testLinked\n");
}

VN_CHILD(types)
{
    const Library library(loadedName);
    auto* const typeOfLinked = library.find<std::type_info const*()>("typeOfLinked");
    std::type_info const* const mine = Vn::InInit<VnInit::testLinked>::getType();
    std::cout << (*typeOfLinked() == *mine) << mine->before(*typeOfLinked()) << typeOfLinked()->before(*mine)
              << (*mine == typeid(Vn::InInit<VnInit::testLinked>)) << "\n";
    return 0;
}

TEST(Borders, typesAreTheSameInEveryModule)
{
    expectOutput("types", "1001\n");
}

VN_CHILD(exceptions)
{
    const Library library(loadedName);
    auto* const throwFromLoaded = library.find<void()>("throwFromLoaded");
    auto* const catchInLoaded = library.find<char const*(void (*)())>("catchInLoaded");

    for (auto* const thrower : {throwFromLoaded, &Linked::throwBorder}) {
        try {
            thrower();
        } catch (Linked::Ex::ExBorder const& caught) {
            std::cout << caught.what() << ", ";
        }
        try {
            thrower();
        } catch (Linked::Ex const& caught) {
            std::cout << caught.getReason() << ", ";
        }
        try {
            thrower();
        } catch (std::logic_error const& caught) {
            std::cout << caught.what() << ", ";
        }
        try {
            thrower();
        } catch (Vn::ExBase const& caught) {
            std::cout << caught.getReason() << "\n";
        }
    }

    void (*const throwHere)() = [] { throw Linked::Ex::ExBorder("src/here", 1, "program"); };
    for (auto* const thrower : {throwFromLoaded, throwHere})
        for (int widest = 0; widest < 4; ++widest)
            std::cout << Linked::catchFrom(thrower, widest) << " ";
    std::cout << "\n" << catchInLoaded(&Linked::throwBorder) << ", " << catchInLoaded(throwHere) << ", ";
    std::cout << catchInLoaded([] { throw Vn::InEx::ExDependencyCycle("src/here", 1); }) << "\n";
    return 0;
}

TEST(Borders, exceptionsAreCaughtInEveryModuleThroughEveryBase)
{
    expectOutput("exceptions", "thrown by loaded, thrown by loaded, thrown by loaded, thrown by loaded\n"
                               "thrown by linked, thrown by linked, thrown by linked, thrown by linked\n"
                               "concrete family standard root concrete family standard root \n"
                               "standard and family, standard and family, standard\n");
}
