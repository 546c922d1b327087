#pragma once

#include <compare>
#include <concepts>
#include <initializer_list>
#include <stdexcept>
#include <utility>
#include <vector>  // and what iterators need: <iterator> would bring the streams as well

namespace Vn
{

/// The sequence in contiguous storage that the family's interfaces speak: `std::vector` with one growth on every
/// platform.
///
///     Vn::Vector<int> primes = {2, 3, 5};
///     primes.push_back(7);
///
/// Operations, their cost and their guarantees are the standard's; `operator[]` is not checked. A full vector grows
/// to one and a half times its capacity, or to the size that is needed if that is more. More than max_size() elements
/// are refused with `std::length_error` ("vector<T> too long"), and the vector stays as it was.
/// Tests: tests/base/vectortest.cpp.
template <class T>
class Vector : private std::vector<T>
{
    using Base = std::vector<T>;

public:
    /// @{
    /// As in `std::vector`.
    using typename Base::allocator_type;
    using typename Base::const_iterator;
    using typename Base::const_pointer;
    using typename Base::const_reference;
    using typename Base::const_reverse_iterator;
    using typename Base::difference_type;
    using typename Base::iterator;
    using typename Base::pointer;
    using typename Base::reference;
    using typename Base::reverse_iterator;
    using typename Base::size_type;
    using typename Base::value_type;
    /// @}

    /// @{
    /// As in `std::vector`, with the same cost and the same rules for iterators.
    ///
    ///     primes.at(9)       // throws std::out_of_range if there are fewer than ten
    ///     primes[9]          // is not checked
    ///
    using Base::at;
    using Base::back;
    using Base::begin;
    using Base::capacity;
    using Base::cbegin;
    using Base::cend;
    using Base::clear;
    using Base::crbegin;
    using Base::crend;
    using Base::empty;
    using Base::end;
    using Base::erase;
    using Base::front;
    using Base::get_allocator;
    using Base::max_size;
    using Base::pop_back;
    using Base::rbegin;
    using Base::rend;
    using Base::shrink_to_fit;
    using Base::size;
    using Base::operator[];
    /// @}

    /// Holds nothing and has allocated nothing.
    Vector() = default;

    /// @{
    /// `count` elements, made from nothing or as copies of `value`.
    ///
    ///     Vn::Vector<int>(3)       ->  0 0 0
    ///     Vn::Vector<int>(3, 7)    ->  7 7 7
    ///     Vn::Vector<int>{3, 7}    ->  3 7
    ///
    /// Throws `std::length_error` for more than max_size().
    explicit Vector(size_type count) : Base(checked(count)) {}
    Vector(size_type count, T const& value) : Base(checked(count), value) {}
    /// @}

    /// @{
    /// Copies of the values, or of what stands from `first` up to `last`, in their order. A range that can be read
    /// only once grows the storage by half again and again; of any other the size is known, and it is allocated once.
    Vector(std::initializer_list<T> values) : Base(values) {}
    template <std::input_iterator Iterator>
    Vector(Iterator first, Iterator last)
    {
        if constexpr (std::forward_iterator<Iterator>)
            Base::reserve(checked(static_cast<size_type>(std::distance(first, last))));
        append(first, last);
    }
    template <std::input_iterator Iterator>
    requires std::derived_from<typename std::iterator_traits<Iterator>::iterator_category,
                               std::forward_iterator_tag>
    Vector(Iterator first, Iterator last) : Base(first, last)
    {}

    /// @}

    /// Copies of the values, in place of what was held.
    Vector& operator=(std::initializer_list<T> values)
    {
        assign(values);
        return *this;
    }

    /// @{
    /// The first element; size() of them stand side by side.
    auto data() noexcept { return Base::data(); }
    auto data() const noexcept { return Base::data(); }
    /// @}

    /// Exchanges the contents, without touching an element.
    void swap(Vector& other) noexcept { Base::swap(other); }

    /// Makes room for `count` elements in all, exactly that many; less than there are changes nothing. Throws
    /// `std::length_error` for more than max_size().
    void reserve(size_type count) { Base::reserve(checked(count)); }

    /// @{
    /// Removes elements from the end, or appends ones that are made from nothing or copied from `value`, until there
    /// are `count`. `value` may be an element of this vector. Throws `std::length_error` for more than max_size().
    void resize(size_type count)
    {
        makeRoomFor(count);
        Base::resize(count);
    }

    void resize(size_type count, T const& value)
    {
        if (count <= capacity()) {
            Base::resize(count, value);
            return;
        }
        const T copy(value);  // `value` may be an element, and those move when the storage grows
        makeRoomFor(count);
        Base::resize(count, copy);
    }

    /// @}

    /// @{
    /// Replaces all elements: by `count` copies of `value`, by the values, or by those from `first` up to `last`.
    /// `value` may be an element of this vector, the range must not be of it. Throws `std::length_error` for more
    /// than max_size().
    void assign(size_type count, T const& value)
    {
        if (checked(count) <= capacity()) {
            Base::assign(count, value);
            return;
        }
        Vector grown;
        grown.Base::reserve(grownCapacity(count));
        grown.Base::assign(count, value);
        swap(grown);
    }

    void assign(std::initializer_list<T> values) { assign(values.begin(), values.end()); }

    template <std::input_iterator Iterator>
    void assign(Iterator first, Iterator last)
    {
        if constexpr (std::forward_iterator<Iterator>) {
            const size_type count = checked(static_cast<size_type>(std::distance(first, last)));
            if (count > capacity()) {
                Vector grown;
                grown.Base::reserve(grownCapacity(count));
                grown.Base::assign(first, last);
                swap(grown);
                return;
            }
            Base::assign(first, last);
        } else {
            // The standard library's own filling would grow in its own steps.
            clear();
            append(first, last);
        }
    }

    /// @}

    /// @{
    /// Appends an element; at most one in many appends moves the others to larger storage. The arguments may be
    /// elements of this vector. If it throws, the vector is as it was. Throws `std::length_error` at max_size().
    void push_back(T const& value) { emplace_back(value); }
    void push_back(T&& value) { emplace_back(std::move(value)); }

    template <class... Arguments>
    reference emplace_back(Arguments&&... arguments)
    {
        if (size() < capacity())
            return Base::emplace_back(std::forward<Arguments>(arguments)...);
        T value(std::forward<Arguments>(arguments)...);  // the arguments may be elements
        makeRoomFor(sizeWith(1));
        return Base::emplace_back(std::move(value));
    }

    /// @}

    /// @{
    /// Inserts before `position`, and returns where the first new element stands, or `position` if there is none.
    /// What is inserted may be an element of this vector, the range from `first` up to `last` must not be of it.
    ///
    ///     primes.insert(primes.begin(), 2);     ->  2 3 5 7
    ///
    /// Throws `std::length_error` where max_size() would be passed, before anything has changed.
    template <class... Arguments>
    iterator emplace(const_iterator position, Arguments&&... arguments)
    {
        const difference_type offset = position - cbegin();
        T value(std::forward<Arguments>(arguments)...);
        makeRoomFor(sizeWith(1));
        return Base::insert(cbegin() + offset, std::move(value));
    }

    iterator insert(const_iterator position, T const& value) { return emplace(position, value); }
    iterator insert(const_iterator position, T&& value) { return emplace(position, std::move(value)); }

    iterator insert(const_iterator position, size_type count, T const& value)
    {
        const difference_type offset = position - cbegin();
        const T copy(value);
        makeRoomFor(sizeWith(count));
        return Base::insert(cbegin() + offset, count, copy);
    }

    iterator insert(const_iterator position, std::initializer_list<T> values)
    {
        return insert(position, values.begin(), values.end());
    }

    template <std::input_iterator Iterator>
    iterator insert(const_iterator position, Iterator first, Iterator last)
    {
        const difference_type offset = position - cbegin();
        if constexpr (std::forward_iterator<Iterator>) {
            makeRoomFor(sizeWith(static_cast<size_type>(std::distance(first, last))));
            return Base::insert(cbegin() + offset, first, last);
        } else {
            Vector gathered(first, last);
            makeRoomFor(sizeWith(gathered.size()));
            return Base::insert(cbegin() + offset, std::make_move_iterator(gathered.begin()),
                                std::make_move_iterator(gathered.end()));
        }
    }

    /// @}

    /// @{
    /// Element by element; `<=>` is lexicographic: {1, 9} < {2}.
    friend bool operator==(Vector const& left, Vector const& right) { return left.base() == right.base(); }
    friend auto operator<=>(Vector const& left, Vector const& right)
    {
        if constexpr (requires { left.base() <=> right.base(); })
            return left.base() <=> right.base();
        else  // a standard library whose vector has the older operators alone
            return left.base() < right.base()   ? std::weak_ordering::less
                   : right.base() < left.base() ? std::weak_ordering::greater
                                                : std::weak_ordering::equivalent;
    }
    /// @}

    /// As left.swap(right).
    friend void swap(Vector& left, Vector& right) noexcept { left.swap(right); }

    /// Removes the elements that satisfy `isUnwanted`, and tells how many; the others keep their order.
    template <class Predicate>
    friend size_type erase_if(Vector& vector, Predicate isUnwanted)
    {
        return std::erase_if(static_cast<Base&>(vector), isUnwanted);
    }

private:
    Base const& base() const { return *this; }

    template <class Iterator>
    void append(Iterator first, Iterator last)
    {
        for (; first != last; ++first)
            emplace_back(*first);
    }

    static size_type checked(size_type count)
    {
        if (count > Base().max_size())
            throw std::length_error("vector<T> too long");
        return count;
    }

    /// Size with `added` more elements; the subtraction can't wrap as the sum could.
    size_type sizeWith(size_type added) const
    {
        if (added > max_size() - size())
            throw std::length_error("vector<T> too long");
        return size() + added;
    }

    /// One and a half times the capacity, or `count` if that is more; without wrapping.
    size_type grownCapacity(size_type count) const
    {
        const size_type half = capacity() / 2;
        const size_type grown = capacity() > max_size() - half ? max_size() : capacity() + half;
        return grown < count ? count : grown;
    }

    void makeRoomFor(size_type count)
    {
        if (checked(count) > capacity())
            Base::reserve(grownCapacity(count));
    }
};

}  // namespace Vn
