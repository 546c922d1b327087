// Private to inbatch_p.h, independencyclosure.cpp and ininitmgrstate_p.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vn
{

/// Square table of bits in one block: bit (i, j) says that i depends on j. A row is read and merged 64 bits at a
/// time.
class InBitMatrix
{
public:
    /// All bits clear; each row begins a word of its own.
    explicit InBitMatrix(std::size_t size)
        : _wordsPerRow((size + bitsPerWord - 1) / bitsPerWord), _words(size * _wordsPerRow)
    {}

    /// @{
    /// Reads or sets bit (i, j), both below the size.
    bool test(std::size_t i, std::size_t j) const { return (word(i, j) >> (j % bitsPerWord) & 1) != 0; }

    void set(std::size_t i, std::size_t j) { _words[offset(i, j)] |= std::uint64_t{1} << (j % bitsPerWord); }
    /// @}

    /// Sets in row `to` everything that is set in row `from`.
    void merge(std::size_t to, std::size_t from)
    {
        // In local variables, which the words written can't alias.
        std::uint64_t* const into = _words.data() + to * _wordsPerRow;
        std::uint64_t const* const source = _words.data() + from * _wordsPerRow;
        const std::size_t width = _wordsPerRow;
        for (std::size_t k = 0; k < width; ++k)
            into[k] |= source[k];
    }

    /// Bits set in row `i`.
    int count(std::size_t i) const
    {
        std::uint64_t const* const row = _words.data() + i * _wordsPerRow;
        int bits = 0;
        for (std::size_t k = 0; k < _wordsPerRow; ++k)
            bits += countBits(row[k]);
        return bits;
    }

private:
    static constexpr std::size_t bitsPerWord = 64;

    /// Sums in parallel fields of 2, 4 and 8 bits: the baseline processor has no instruction for it, and the
    /// compiler would call a function of its own for each word.
    static int countBits(std::uint64_t word)
    {
        word -= word >> 1 & 0x5555555555555555;
        word = (word & 0x3333333333333333) + (word >> 2 & 0x3333333333333333);
        word = (word + (word >> 4)) & 0x0F0F0F0F0F0F0F0F;
        return static_cast<int>(word * 0x0101010101010101 >> 56);
    }

    std::size_t offset(std::size_t i, std::size_t j) const { return i * _wordsPerRow + j / bitsPerWord; }
    std::uint64_t word(std::size_t i, std::size_t j) const { return _words[offset(i, j)]; }

    std::size_t _wordsPerRow;
    std::vector<std::uint64_t> _words;
};

/// The dependencies as listed: node i lists `targets[starts[i]]` to `targets[starts[i + 1] - 1]`, repetitions
/// included.
///
///     0 lists 1 and 2, 1 lists nothing, 2 lists 1  ->  starts {0, 2, 2, 3}, targets {1, 2, 1}
struct InDependencyGraph
{
    std::vector<unsigned> starts;
    std::vector<unsigned> targets;

    std::size_t size() const { return starts.size() - 1; }
};

/// The graph once dependencies of dependencies are dependencies.
struct InDependencyClosure
{
    InBitMatrix dependencies;  ///< bit (i, j): i depends on j; bit (i, i): node i is in a cycle or lists itself
    std::vector<int> counts;   ///< per node: dependencies as listed plus inherited ones, without itself
    bool isCyclic;             ///< some node depends on itself through others and doesn't list itself
};

/// Closes the graph in one pass over its strongly connected components.
///
/// The result is that of Warshall's algorithm on the same bits, where only what a pass adds is counted and only a
/// diagonal bit that a pass adds is a cycle. So a cycle in which every node lists itself is not reported.
/// R. Tarjan, "Depth-first search and linear graph algorithms", SIAM J. Comput. 1 (1972).
/// Tests: tests/base/inrandomgraphtest.cpp.
InDependencyClosure closeDependencies(InDependencyGraph const& graph);

}  // namespace Vn
