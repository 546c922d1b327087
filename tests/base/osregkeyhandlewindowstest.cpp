#include <base/osregkeyhandle.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <string>
#include <type_traits>

using Vn::OsRegKeyHandle;

static_assert(!std::is_polymorphic_v<OsRegKeyHandle> && sizeof(OsRegKeyHandle) == sizeof(HKEY));
static_assert(std::is_same_v<OsRegKeyHandle::Key, HKEY>);

namespace
{
/// A real key, made and removed without the class under test.
class OsRegKeyHandleTest : public testing::Test
{
protected:
    OsRegKeyHandleTest() : _path("Software\\VNbaseTest" + std::to_string(::GetCurrentProcessId()))
    {
        ::HKEY key = nullptr;
        EXPECT_EQ(::RegCreateKeyExA(HKEY_CURRENT_USER, _path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                                    nullptr),
                  0);
        const ::DWORD number = 0x12345678;
        ::RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<::BYTE const*>(&number), sizeof number);
        ::RegSetValueExA(key, "TheText", 0, REG_SZ, reinterpret_cast<::BYTE const*>("folder"), 7);
        ::HKEY below = nullptr;
        ::RegCreateKeyExA(key, "Below", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr);
        ::RegCloseKey(below);
        ::RegCloseKey(key);
    }

    ~OsRegKeyHandleTest() override
    {
        ::RegDeleteKeyA(HKEY_CURRENT_USER, (_path + "\\Below").c_str());
        ::RegDeleteKeyA(HKEY_CURRENT_USER, _path.c_str());
    }

    std::string _path;
};
}  // namespace

TEST_F(OsRegKeyHandleTest, readsTheValuesOfItsKey)
{
    const OsRegKeyHandle key(HKEY_CURRENT_USER, _path.c_str(), 0, KEY_READ);
    ASSERT_NE(key.getOSHandle(), nullptr);
    unsigned long type = 0, number = 0, size = sizeof number;
    EXPECT_EQ(key.queryValue("Number", nullptr, &type, reinterpret_cast<unsigned char*>(&number), &size), 0);
    EXPECT_EQ(type, static_cast<unsigned long>(REG_DWORD));
    EXPECT_EQ(number, 0x12345678u);
    EXPECT_EQ(size, 4u);

    unsigned char text[16];
    size = sizeof text;
    EXPECT_EQ(key.queryValue("TheText", nullptr, &type, text, &size), 0);
    EXPECT_EQ(type, static_cast<unsigned long>(REG_SZ));
    EXPECT_EQ(size, 7u);
    EXPECT_STREQ(reinterpret_cast<char const*>(text), "folder");

    size = 3;
    EXPECT_EQ(key.queryValue("TheText", nullptr, &type, text, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(key.queryValue("Missing", nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
}

TEST_F(OsRegKeyHandleTest, countsWhatItsKeyHolds)
{
    const OsRegKeyHandle key(HKEY_CURRENT_USER, _path.c_str(), 0, KEY_READ);
    struct Info
    {
        char className[16] = "untouched";
        ::DWORD classLength = sizeof className, subKeys = 99, longestSubKey = 99, longestClass = 99, values = 99,
                longestName = 99, longestValue = 99, security = 99;
        ::FILETIME written = {};
    } ours, system;
    EXPECT_EQ(key.queryInfo(ours.className, &ours.classLength, nullptr, &ours.subKeys, &ours.longestSubKey,
                            &ours.longestClass, &ours.values, &ours.longestName, &ours.longestValue, &ours.security,
                            &ours.written),
              0);
    EXPECT_EQ(ours.subKeys, 1u);
    EXPECT_EQ(ours.longestSubKey, 5u);
    EXPECT_EQ(ours.values, 2u);
    EXPECT_EQ(ours.longestName, 7u);
    ::RegQueryInfoKeyA(key.getOSHandle(), system.className, &system.classLength, nullptr, &system.subKeys,
                       &system.longestSubKey, &system.longestClass, &system.values, &system.longestName,
                       &system.longestValue, &system.security, &system.written);
    EXPECT_EQ(std::memcmp(&ours, &system, sizeof ours), 0);
}

TEST_F(OsRegKeyHandleTest, aMissingKeyIsNullAndItsQueriesFail)
{
    const OsRegKeyHandle key(HKEY_CURRENT_USER, (_path + "\\Missing").c_str(), 0, KEY_READ);
    EXPECT_EQ(key.getOSHandle(), nullptr);
    EXPECT_EQ(key.queryValue("Number", nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
    EXPECT_EQ(key.queryInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr),
              ERROR_INVALID_HANDLE);
}

TEST_F(OsRegKeyHandleTest, closesItsKeyAtItsEnd)
{
    ::HKEY handle = nullptr;
    {
        const OsRegKeyHandle key(HKEY_CURRENT_USER, _path.c_str(), 0, KEY_READ);
        handle = key.getOSHandle();
        EXPECT_EQ(::RegQueryValueExA(handle, "Number", nullptr, nullptr, nullptr, nullptr), 0);
    }
    EXPECT_EQ(::RegQueryValueExA(handle, "Number", nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
}

TEST_F(OsRegKeyHandleTest, assignmentCopiesTheHandle)
{
    const OsRegKeyHandle key(HKEY_CURRENT_USER, _path.c_str(), 0, KEY_READ);
    {
        OsRegKeyHandle other(HKEY_CURRENT_USER, "No such key", 0, KEY_READ);
        other = key;
        EXPECT_EQ(other.getOSHandle(), key.getOSHandle());
        EXPECT_EQ(other.queryValue("Number", nullptr, nullptr, nullptr, nullptr), 0);
    }
    EXPECT_EQ(key.queryValue("Number", nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
}
