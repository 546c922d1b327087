#pragma once

#include <initializer_list>
#include <iterator>
#include <list>
#include <stdexcept>
#include <utility>

namespace Vn
{

/// The doubly linked sequence that the family's interfaces speak: `std::list`, whose operations, cost and guarantees
/// it has. More than max_size() elements are refused with `std::length_error` ("list<T> too long") before anything is
/// allocated.
/// Tests: tests/base/listtest.cpp.
template <class T>
class List : public std::list<T>
{
    using Base = std::list<T>;

public:
    /// @{
    /// As in `std::list`.
    using typename Base::const_iterator;
    using typename Base::iterator;
    using typename Base::size_type;
    /// @}

    /// Holds nothing.
    List() = default;

    /// @{
    /// `count` elements, made from nothing or as copies of `value`.
    ///
    ///     Vn::List<int>(2, 7)    ->  7 7
    ///
    /// Throws `std::length_error` for more than max_size().
    explicit List(size_type count) : Base(checked(count)) {}
    List(size_type count, T const& value) : Base(checked(count), value) {}
    /// @}

    /// @{
    /// Copies of the values, or of what stands from `first` up to `last`, in their order.
    List(std::initializer_list<T> values) : Base(values) {}
    template <std::input_iterator Iterator>
    List(Iterator first, Iterator last) : Base(first, last)
    {}

    /// @}

    using Base::assign;
    using Base::insert;
    using Base::operator=;

    /// @{
    /// Replaces all elements; `count` copies of `value`, or as in `std::list`. Throws `std::length_error` for more
    /// than max_size(), with the list as it was.
    void assign(size_type count, T const& value) { Base::assign(checked(count), value); }

    /// @}

    /// @{
    /// Removes elements from the end, or appends ones that are made from nothing or copied from `value`, until there
    /// are `count`. Throws `std::length_error` for more than max_size(), with the list as it was.
    void resize(size_type count) { Base::resize(checked(count)); }
    void resize(size_type count, T const& value) { Base::resize(checked(count), value); }

    /// @}

    /// @{
    /// Inserts `count` copies of `value` before `position`, or as in `std::list`, and returns where the first one
    /// stands. Throws `std::length_error` where max_size() would be passed, with the list as it was.
    iterator insert(const_iterator position, size_type count, T const& value)
    {
        if (count > this->max_size() - this->size())
            throwTooLong();
        return Base::insert(position, count, value);
    }
    /// @}

private:
    [[noreturn]] static void throwTooLong() { throw std::length_error("list<T> too long"); }

    static size_type checked(size_type count)
    {
        if (count > Base().max_size())
            throwTooLong();
        return count;
    }
};

}  // namespace Vn
