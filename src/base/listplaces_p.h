// Private to envvar.cpp and lgregistry.cpp.
#pragma once

#include <base/list.h>

#include <functional>
#include <unordered_map>

namespace Vn
{

/// Where the elements of a List stand, so that one is taken out by its value without a walk through the others.
/// Tests: tests/base/listplacestest.cpp.
template <class T, class Hash = std::hash<T>>
class ListPlaces
{
public:
    /// The list is changed, or (if there is no memory) it is not.
    void pushBack(List<T>& list, T const& value) { insert(list, list.end(), value); }
    void pushFront(List<T>& list, T const& value) { insert(list, list.begin(), value); }

    /// Takes every element that equals `value` out.
    void remove(List<T>& list, T const& value)
    {
        const auto [first, last] = _places.equal_range(value);
        for (auto place = first; place != last; ++place)
            list.erase(place->second);
        _places.erase(first, last);
    }

    void clear(List<T>& list)
    {
        _places.clear();
        list.clear();
    }

private:
    using Place = typename List<T>::iterator;

    void insert(List<T>& list, Place before, T const& value)
    {
        const Place place = list.insert(before, value);
        try {
            _places.emplace(value, place);
        } catch (...) {
            list.erase(place);
            throw;
        }
    }

    std::unordered_multimap<T, Place, Hash> _places;
};

}  // namespace Vn
