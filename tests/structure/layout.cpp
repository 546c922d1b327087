// How a class is laid out by the C++ ABI (Itanium, which MinGW keeps as well), as far as our classes need it:
//
//   - A class with virtual functions begins with the pointer to its table, which it shares with its first base that has one.
//   - Bases follow in their order, then fields, each at the next multiple of its alignment. A base ends behind its last
//     byte of data: what follows may stand in its padding. A field keeps all of its size.
//   - Virtual bases come last, and the whole is rounded up to the largest alignment.
//   - The table's slots are those of the base whose pointer is shared, then the new functions in their order. A virtual
//     destructor takes two.
//
// The classes come with bases first, so each finds the shapes of its bases.

#include "layout.h"

#include <algorithm>
#include <cxxabi.h>
#include <map>
#include <typeindex>

namespace structure
{
namespace
{
std::map<std::type_index, Shape>& shapes()
{
    static std::map<std::type_index, Shape> all;
    return all;
}

std::size_t roundedUp(std::size_t offset, std::size_t alignment)
{
    return (offset + alignment - 1) / alignment * alignment;
}

/// A direct base, as the compiler describes the class for exceptions.
struct RealBase
{
    std::type_info const* type = nullptr;
    std::size_t offset = 0;  ///< not of a virtual base
    bool isVirtual = false;
    bool isPublic = true;
};

std::vector<RealBase> basesOf(std::type_info const& type)
{
    std::vector<RealBase> bases;
    if (auto const* single = dynamic_cast<abi::__si_class_type_info const*>(&type)) {
        bases.push_back({single->__base_type, 0, false, true});
    } else if (auto const* several = dynamic_cast<abi::__vmi_class_type_info const*>(&type)) {
        for (unsigned i = 0; i < several->__base_count; ++i) {
            auto const& base = several->__base_info[i];
            bases.push_back({base.__base_type, static_cast<std::size_t>(base.__offset()), base.__is_virtual_p(),
                             base.__is_public_p()});
        }
    }
    return bases;
}
}  // namespace

Layout::Layout(char const* name, std::type_info const& type, bool isPolymorphic)
    : _name(name), _type(type), _isPolymorphic(isPolymorphic)
{}

std::vector<std::string>& Layout::differences()
{
    static std::vector<std::string> all;
    return all;
}

int& Layout::count()
{
    static int number = 0;
    return number;
}

void Layout::differ(bool isDifferent, int line, std::string const& what)
{
    ++count();
    if (isDifferent)
        differences().push_back("structure.txt:" + std::to_string(line) + ": " + _name + ": " + what);
}

void Layout::addBase(int line, std::type_info const& type, Shape const& standard, bool isEmpty, bool isVirtual,
                     bool isPublic)
{
    const auto known = shapes().find(type);
    Shape const& shape = known != shapes().end() ? known->second : standard;
    const std::vector<RealBase> real = basesOf(_type);
    const unsigned number = _bases++;
    if (number >= real.size() || *real[number].type != type) {
        differ(true, line, "base number " + std::to_string(number + 1) + " is another class, or there is none");
        return;
    }
    differ(real[number].isVirtual != isVirtual || real[number].isPublic != isPublic, line,
           "its base is virtual, public or neither otherwise than the table has it");
    // The pointer stands in front of bases that can't share theirs.
    if (isVirtual) {
        _shape.virtualBases.push_back(&shape);
    } else {
        if (shape.slots > 0 && !_hasPointer) {
            _hasPointer = true;
            _nextSlot = _slots = shape.slots;
        } else if (_isPolymorphic && !_hasPointer) {
            _hasPointer = true;
            placeField(sizeof(void*), alignof(void*));
        }
        const std::size_t offset = isEmpty ? 0 : roundedUp(_shape.end, shape.alignment);
        _shape.alignment = std::max(_shape.alignment, shape.alignment);
        _shape.end = isEmpty ? _shape.end : offset + shape.end;
        differ(real[number].offset != offset, line,
               "its base is at " + std::to_string(real[number].offset) + ", by the table at " +
                   std::to_string(offset));
    }
    if (known != shapes().end() && !isVirtual)
        _shape.virtualBases.insert(_shape.virtualBases.end(), shape.virtualBases.begin(), shape.virtualBases.end());
}

std::size_t Layout::placeField(std::size_t size, std::size_t alignment)
{
    if (_isPolymorphic && !_hasPointer) {
        _hasPointer = true;
        placeField(sizeof(void*), alignof(void*));
    }
    const std::size_t offset = roundedUp(_shape.end, alignment);
    _shape.end = offset + size;
    _shape.alignment = std::max(_shape.alignment, alignment);
    return offset;
}

void Layout::addField(int line, char const* name, std::size_t size, std::size_t alignment, bool isOfType,
                      std::size_t offset)
{
    differ(!isOfType, line, std::string(name) + " has another type");
    const std::size_t expected = placeField(size, alignment);
    differ(offset != expected, line,
           std::string(name) + " is at " + std::to_string(offset) + ", by the table at " +
               std::to_string(expected));
}

void Layout::slot(int line, char const* function, int real)
{
    differ(real != _slots, line,
           std::string(function) + " has slot " + std::to_string(real) + ", by the table " +
               std::to_string(_slots));
    ++_slots;
}

void Layout::value(int line, char const* name, long long expected, long long real)
{
    differ(real != expected, line,
           std::string(name) + " is " + std::to_string(real) + ", by the table " + std::to_string(expected));
}

void Layout::close(int line, std::size_t size, std::size_t alignment, int slots)
{
    if (_isPolymorphic && !_hasPointer) {
        _hasPointer = true;
        placeField(sizeof(void*), alignof(void*));
    }
    differ(basesOf(_type).size() != _bases, line,
           "it has " + std::to_string(basesOf(_type).size()) + " bases, by the table " + std::to_string(_bases));
    if (slots >= 0)
        differ(slots != _slots, line,
               "it has " + std::to_string(slots) + " slots, by the table " + std::to_string(_slots));
    std::size_t whole = _shape.end;
    _shape.slots = _slots;
    for (Shape const* base : _shape.virtualBases) {
        whole = roundedUp(whole, base->alignment) + base->end;
        _shape.alignment = std::max(_shape.alignment, base->alignment);
    }
    whole = std::max<std::size_t>(1, roundedUp(whole, _shape.alignment));
    differ(size != whole, line,
           "it takes " + std::to_string(size) + " bytes, by the table " + std::to_string(whole) +
               ": a field isn't in the table, or has grown");
    differ(alignment != _shape.alignment, line, "it has another alignment");
    shapes()[_type] = _shape;
}
}  // namespace structure
