#include <base/exinternalerror.h>
#include <base/insingleton.h>

#include "child.h"
#include "expectthrow.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>

using Vn::InSingleton;
using Vn::InSingletonEx;
using VnTest::expectThrow;

namespace
{
/// A class per test, as each instantiation has one life per process.
template <int test>
class Subject
{
public:
    Subject() { ++alive; }
    ~Subject() { --alive; }
    static inline int alive = 0;
};

template <class T>
std::string message(char const* state)
{
    return std::string(typeid(InSingleton<T>).name()) + " " + state + ".";
}
}  // namespace

TEST(InSingleton, useBeforeTheStartIsRefused)
{
    using T = Subject<1>;
    expectThrow<InSingletonEx::ExNotInitialized, std::runtime_error>([] { InSingleton<T>::getInstance(); },
                                                                     message<T>("is not initialized").c_str());
    expectThrow<InSingletonEx::ExNotInitialized, std::runtime_error>([] { InSingleton<T>::finalize(); },
                                                                     message<T>("is not initialized").c_str());
}

TEST(InSingleton, livesFromInitializeToFinalize)
{
    using T = Subject<2>;
    T* const instance = new T;
    InSingleton<T>::initialize(instance);
    EXPECT_EQ(&InSingleton<T>::getInstance(), instance);
    EXPECT_EQ(T::alive, 1);
    InSingleton<T>::finalize();
    EXPECT_EQ(T::alive, 0);
}

TEST(InSingleton, secondInitializeKeepsTheFirstInstance)
{
    using T = Subject<3>;
    T* const first = new T;
    T second;
    InSingleton<T>::initialize(first);
    expectThrow<InSingletonEx::ExAlreadyInitialized, std::runtime_error>(
        [&] { InSingleton<T>::initialize(&second); }, message<T>("has already been initialized").c_str());
    EXPECT_EQ(&InSingleton<T>::getInstance(), first);
    EXPECT_EQ(T::alive, 2) << "the refused object stays with the caller";
    InSingleton<T>::finalize();
}

TEST(InSingleton, nullInstanceGoesToItsEndWithoutADelete)
{
    using T = Subject<4>;
    InSingleton<T>::initialize(nullptr);
    expectThrow<Vn::ExInternalError, std::runtime_error>([] { InSingleton<T>::getInstance(); },
                                                         "Assertion '_instance != 0' failed.");
    InSingleton<T>::finalize();
    EXPECT_EQ(T::alive, 0);
    EXPECT_THROW(InSingleton<T>::finalize(), InSingletonEx::ExAlreadyDestroyed);
}

TEST(InSingleton, destroyedOneStaysDestroyed)
{
    using T = Subject<5>;
    InSingleton<T>::initialize(new T);
    InSingleton<T>::finalize();
    expectThrow<InSingletonEx::ExAlreadyDestroyed, std::runtime_error>(
        [] { InSingleton<T>::finalize(); }, message<T>("has already been destroyed").c_str());
    T refused;
    expectThrow<InSingletonEx::ExAlreadyDestroyed, std::runtime_error>(
        [&] { InSingleton<T>::initialize(&refused); }, message<T>("has already been destroyed").c_str());
    EXPECT_EQ(T::alive, 1);
    expectThrow<InSingletonEx::ExNotInitialized, std::runtime_error>([] { InSingleton<T>::getInstance(); },
                                                                     message<T>("is not initialized").c_str());
}

TEST(InSingletonEx, isOfTheFamilyOfTheFrame)
{
    EXPECT_THROW(InSingleton<Subject<6>>::getInstance(), Vn::InEx);
    EXPECT_THROW(InSingleton<Subject<6>>::getInstance(), InSingletonEx);
}
