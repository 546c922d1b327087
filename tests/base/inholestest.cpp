#include <base/inholes_p.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

using Vn::Vector;

namespace
{
/// An element that knows its place, and counts what is done to it and its like.
struct Guest
{
    explicit Guest(int guestName) : name(guestName) {}
    Guest(Guest&& other) noexcept : name(other.name) { ++steps; }
    Guest& operator=(Guest&& other) noexcept
    {
        name = other.name;
        ++steps;
        return *this;
    }

    int name;  ///< negative for a hole

    static inline long steps = 0;
};

/// A sequence whose elements leave in any order, and a count of the steps that this takes.
class House
{
public:
    explicit House(int guests) : _placeOf(static_cast<std::size_t>(guests))
    {
        for (int name = 0; name < guests; ++name)
            enter(name);
        Guest::steps = 0;
    }

    void enter(int name)
    {
        Vn::InHoles::makeRoom(_guests, isHole, [this](Guest const& guest, std::size_t place) {
            _placeOf[static_cast<std::size_t>(guest.name)] = place;
        });
        _guests.push_back(Guest(name));
        _placeOf[static_cast<std::size_t>(name)] = _guests.size() - 1;
    }

    void leave(int name)
    {
        _guests[_placeOf[static_cast<std::size_t>(name)]].name = -1;
        Vn::InHoles::dropAtEnd(_guests, isHole);
    }

    /// The guests in their order; each must stand where it believes.
    std::vector<int> names() const
    {
        std::vector<int> list;
        for (std::size_t place = 0; place < _guests.size(); ++place) {
            const int name = _guests[place].name;
            if (name < 0)
                continue;
            EXPECT_EQ(_placeOf[static_cast<std::size_t>(name)], place);
            list.push_back(name);
        }
        return list;
    }

    std::size_t places() const { return _guests.size(); }
    std::size_t capacity() const { return _guests.capacity(); }

private:
    static bool isHole(Guest const& guest)
    {
        ++Guest::steps;
        return guest.name < 0;
    }

    Vector<Guest> _guests;
    std::vector<std::size_t> _placeOf;  ///< by name
};

std::vector<int> numbers(int count)
{
    std::vector<int> list(static_cast<std::size_t>(count));
    std::iota(list.begin(), list.end(), 0);
    return list;
}
}  // namespace

TEST(InHoles, thoseWhoStayKeepTheirOrderAndKnowTheirPlaces)
{
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        constexpr int count = 40;
        House house(count);
        std::vector<int> expected = numbers(count), leaving = expected;
        std::shuffle(leaving.begin(), leaving.end(), random);
        for (int name : leaving) {
            house.leave(name);
            std::erase(expected, name);
            ASSERT_EQ(house.names(), expected);
            if (random() % 4 == 0) {
                house.enter(name);
                expected.push_back(name);
            }
        }
    }
}

TEST(InHoles, theLastToLeaveTakesTheHolesBeforeItAlong)
{
    House house(3);
    house.leave(1);
    EXPECT_EQ(house.places(), 3u);
    house.leave(2);
    EXPECT_EQ(house.places(), 1u);
    house.leave(0);
    EXPECT_EQ(house.places(), 0u);
}

TEST(InHoles, aSequenceThatIsMostlyHolesIsClosedBeforeItGrows)
{
    House house(100);
    std::vector<int> expected = numbers(100);
    const std::size_t capacity = house.capacity();
    for (int round = 0; round < 1000; ++round) {
        // All but the last leave, so no hole is at the end; then as many come.
        for (int name : std::vector<int>(expected.begin(), expected.end() - 1))
            house.leave(name);
        expected = house.names();
        ASSERT_EQ(expected.size(), 1u);
        for (int name = 0; name < 100; ++name)
            if (name != expected.front())
                house.enter(name);
        expected = house.names();
        ASSERT_EQ(expected.size(), 100u);
        ASSERT_LE(house.capacity(), 4 * capacity);
    }
}

TEST(InHoles, aDepartureCostsTheSameWhateverTheNumberOfTheOthers)
{
    for (int order = 0; order < 3; ++order)
        for (int count : {1000, 100000}) {
            House house(count);
            std::vector<int> leaving = numbers(count);
            if (order == 1)
                std::reverse(leaving.begin(), leaving.end());
            else if (order == 2)
                std::shuffle(leaving.begin(), leaving.end(), std::mt19937(2));
            for (int name : leaving)
                house.leave(name);
            EXPECT_EQ(house.places(), 0u);
            EXPECT_LE(Guest::steps, 6L * count) << "order " << order;
        }
}
