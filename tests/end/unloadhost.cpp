// A program that unloads the library while a thread lives on that has taken a lock of it: unloadhost released|held.
#include "library.h"

#include <cstring>
#include <future>
#include <iostream>
#include <optional>
#include <thread>

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const bool gives = std::strcmp(argv[1], "released") == 0;
    std::optional<VnTest::Library> plugIn(std::in_place, "VNtestlate");
    std::promise<void> hasTaken;
    std::promise<void> mayEnd;
    std::thread thread([&] {
        plugIn->find<void(bool)>("lateTakeLock")(gives);
        hasTaken.set_value();
        mayEnd.get_future().wait();
    });
    hasTaken.get_future().wait();
    plugIn.reset();
    std::cout << "loaded " << VnTest::Library::isLoaded("VNtestlate") << VnTest::Library::isLoaded("VNbase")
              << std::endl;
    mayEnd.set_value();
    thread.join();
    std::cout << "thread ended" << std::endl;
    if (gives) {
        plugIn.emplace("VNtestlate");
        plugIn->find<void(bool)>("lateTakeLock")(true);
        std::cout << "taken again" << std::endl;
    }
    return 0;
}
