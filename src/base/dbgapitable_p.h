// Private to dbgbuildinfomgr.cpp.
#pragma once

#include <base/dbgbuildinfo.h>
#include <base/exreasontext_p.h>
#include <base/list.h>
#include <base/objptr.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Vn
{

/// The objects of each API, in the order of their registration, by the address of its name.
///
/// The text of the name spreads the APIs over buckets, the address tells them apart: equal texts at two addresses are
/// two APIs of one bucket. There are 8 buckets at first, and twice as many whenever there are more APIs than buckets.
/// Destroying the table destroys the objects.
class DbgApiTable
{
public:
    using Infos = List<DbgBuildInfo*>;

    DbgApiTable() : _buckets(firstBucketCount), _size(0) {}

    ~DbgApiTable() { clear(); }

    DbgApiTable(DbgApiTable const&) = delete;
    DbgApiTable& operator=(DbgApiTable const&) = delete;

    /// Intended: by the text, though names are told apart by address; in 32 bits, with signed characters. The order
    /// in which APIs are printed depends on it; do not mend.
    static std::uint32_t hash(char const* name)
    {
        std::uint32_t value = 0;
        for (char const* c = ExReasonText::orEmpty(name); *c != '\0'; ++c)
            value = value * 5 + static_cast<std::uint32_t>(static_cast<signed char>(*c));
        return value;
    }

    /// The objects of the API, of which there is at least one; null without any.
    Infos* find(char const* name)
    {
        for (Api& api : bucketOf(hash(name)))
            if (api.name == name)
                return &api.infos;
        return nullptr;
    }

    /// Takes the object, behind others of its API. Without memory everything stays as it was.
    void add(char const* name, ObjPtr<DbgBuildInfo>& info)
    {
        if (Infos* const known = find(name)) {
            known->push_back(info.get());
            info.release();
            return;
        }
        Bucket fresh;
        fresh.push_back({name, hash(name), {}});
        fresh.front().infos.push_back(info.get());
        if (_size >= _buckets.size())
            grow();
        bucketOf(fresh.front().hash).splice(bucketOf(fresh.front().hash).end(), fresh);
        ++_size;
        info.release();
    }

    /// Destroys the objects; 8 buckets are left, so nothing is allocated.
    void clear()
    {
        forEach([](Infos const& infos) {
            for (DbgBuildInfo* info : infos)
                destroyOwned(info);
        });
        for (Bucket& bucket : _buckets)
            bucket.clear();
        _buckets.resize(firstBucketCount);
        _size = 0;
    }

    /// Calls `action` with the objects of each API, bucket by bucket.
    template <class Action>
    void forEach(Action const& action) const
    {
        for (Bucket const& bucket : _buckets)
            for (Api const& api : bucket)
                action(api.infos);
    }

    /// For tests: a power of two, 8 at least.
    std::size_t countBuckets() const { return _buckets.size(); }

private:
    static constexpr std::size_t firstBucketCount = 8;  ///< stays a power of 2

    struct Api
    {
        char const* name;
        std::uint32_t hash;
        Infos infos;
    };
    using Bucket = List<Api>;

    Bucket& bucketOf(std::uint32_t hash) { return _buckets[hash & (_buckets.size() - 1)]; }

    /// Moves the entries as they are, so pointers to them stay valid.
    void grow()
    {
        std::vector<Bucket> more(_buckets.size() * 2);
        for (Bucket& bucket : _buckets)
            while (!bucket.empty()) {
                Bucket& target = more[bucket.front().hash & (more.size() - 1)];
                target.splice(target.end(), bucket, bucket.begin());
            }
        _buckets.swap(more);
    }

    std::vector<Bucket> _buckets;
    std::size_t _size;
};

}  // namespace Vn
