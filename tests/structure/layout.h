#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

/// What generate.py writes from structure.txt is made of these: the compiler's figures of a class, and what follows for
/// them from the order of its lines in the table.
///
/// The platforms differ in the sizes of types (`long` has 32 bits on Windows), so the table holds no figures. Where a
/// field has to stand follows from the types before it, by the rules of the C++ ABI that all of our compilers keep.
namespace structure
{
/// A number for each fact. An explicit instantiation may name private members, so it is where a fact is written down:
/// it defines `fact(Key<Number>)`, which the tests call.
template <int Number>
struct Key
{
    friend constexpr auto fact(Key<Number>);
};

template <class Real>
struct Type
{
    using type = Real;
};

template <class Real>
struct Field
{
    using type = Real;
    std::size_t offset;
};

template <int Number, class Real>
struct TypeFact
{
    friend constexpr auto fact(Key<Number>) { return Type<Real>{}; }
};

template <int Number, std::size_t offset, class Real>
struct FieldFact
{
    friend constexpr auto fact(Key<Number>) { return Field<Real>{offset}; }
};

template <int Number, auto value>
struct ValueFact
{
    friend constexpr auto fact(Key<Number>) { return value; }
};

/// Its own virtual function comes into the slot behind the last one of the class.
template <class Class>
struct Behind : Class
{
    virtual void behindTheLast();
};

/// The slot that a pointer to a virtual member function leads to; -1 if the function isn't virtual.
template <class Function>
int slotOf(Function function)
{
    static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t words[2];
    __builtin_memcpy(words, &function, sizeof words);
    constexpr std::ptrdiff_t entry = sizeof(void*);
#if defined(__aarch64__) || defined(__arm__)
    return (words[1] & 1) != 0 ? static_cast<int>(words[0] / entry) : -1;
#else
    return (words[0] & 1) != 0 ? static_cast<int>(words[0] / entry) : -1;
#endif
}

/// What a class gives to the classes below it.
struct Shape
{
    std::size_t end = 0;  ///< behind the last byte of data, its virtual bases aside: derived classes go on here
    std::size_t alignment = 1;
    int slots = 0;
    std::vector<Shape const*> virtualBases;
};

/// Follows the lines of a class in the table, and collects where the compiler's class differs.
class Layout
{
public:
    Layout(char const* name, std::type_info const& type, bool isPolymorphic);

    template <class Class>
    static Layout of(char const* name)
    {
        return Layout(name, typeid(Class), std::is_polymorphic_v<Class>);
    }

    template <class Base>
    void base(int line, bool isVirtual, bool isPublic)
    {
        const Shape standard{sizeof(Base), alignof(Base), std::is_polymorphic_v<Base> ? 3 : 0, {}};
        addBase(line, typeid(Base), standard, std::is_empty_v<Base>, isVirtual, isPublic);
    }

    void slot(int line, char const* function, int real);
    void destructor() { _slots += 2; }

    template <class Expected, class Real>
    void field(int line, char const* name, Field<Real> real)
    {
        addField(line, name, sizeof(Stored<Real>), alignof(Stored<Real>), std::is_same_v<Expected, Real>,
                 real.offset);
    }

    /// A bit-field has no offset; the next field shows whether it takes `sizeof(Real)` bytes.
    template <class Expected, class Real>
    void bits(int line, char const* name, Type<Real>)
    {
        placeField(sizeof(Real), alignof(Real));
        type<Expected>(line, name, Type<Real>{});
    }

    template <class Expected, class Real>
    void type(int line, char const* name, Type<Real>)
    {
        differ(!std::is_same_v<Expected, Real>, line, std::string(name) + " has another type");
    }

    void value(int line, char const* name, long long expected, long long real);

    /// The last call: sizes, and the number of slots if the table has any (`slots` is that of the compiler, or -1).
    void close(int line, std::size_t size, std::size_t alignment, int slots);

    /// One line for each difference, with the line of the table.
    static std::vector<std::string>& differences();

    /// How many facts have been compared.
    static int& count();

private:
    /// A reference takes the place of a pointer.
    template <class T>
    using Stored = std::conditional_t<std::is_reference_v<T>, void*, T>;

    void addBase(int line, std::type_info const& type, Shape const& standard, bool isEmpty, bool isVirtual,
                 bool isPublic);
    void addField(int line, char const* name, std::size_t size, std::size_t alignment, bool isOfType,
                  std::size_t offset);
    std::size_t placeField(std::size_t size, std::size_t alignment);
    void differ(bool isDifferent, int line, std::string const& what);

    char const* _name;
    std::type_info const& _type;
    bool _isPolymorphic;
    Shape _shape;
    bool _hasPointer = false;  ///< to the table of slots: a base has brought it, or it has its place
    int _slots = 0;
    int _nextSlot = 0;
    unsigned _bases = 0;
};
}  // namespace structure
