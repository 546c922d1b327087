#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vn
{

/// Square table of bits in one block: bit (i, j) says that i needs j.
class InBitMatrix
{
public:
    explicit InBitMatrix(std::size_t size)
        : _wordsPerRow((size + bitsPerWord - 1) / bitsPerWord), _words(size * _wordsPerRow)
    {}

    bool test(std::size_t i, std::size_t j) const { return (word(i, j) >> (j % bitsPerWord) & 1) != 0; }

    void set(std::size_t i, std::size_t j) { _words[offset(i, j)] |= std::uint64_t{1} << (j % bitsPerWord); }

    /// Sets in row `to` all that is set in row `from`.
    void merge(std::size_t to, std::size_t from)
    {
        for (std::size_t k = 0; k < _wordsPerRow; ++k)
            _words[to * _wordsPerRow + k] |= _words[from * _wordsPerRow + k];
    }

    int count(std::size_t i) const
    {
        int bits = 0;
        for (std::size_t k = 0; k < _wordsPerRow; ++k)
            bits += std::popcount(_words[i * _wordsPerRow + k]);
        return bits;
    }

private:
    static constexpr std::size_t bitsPerWord = 64;

    std::size_t offset(std::size_t i, std::size_t j) const { return i * _wordsPerRow + j / bitsPerWord; }
    std::uint64_t word(std::size_t i, std::size_t j) const { return _words[offset(i, j)]; }

    std::size_t _wordsPerRow;
    std::vector<std::uint64_t> _words;
};

/// Who needs whom, as listed: node i needs `targets[starts[i]]` to `targets[starts[i + 1] - 1]`, repetitions included.
struct InDependencyGraph
{
    std::vector<unsigned> starts;
    std::vector<unsigned> targets;

    std::size_t size() const { return starts.size() - 1; }
};

/// What a graph comes to once needs of needs count as needs.
struct InDependencyClosure
{
    InBitMatrix needs;        ///< bit (i, i) stands for a node on a ring, or one that lists itself
    std::vector<int> counts;  ///< per node: needs as listed, plus those that are only inherited, itself left out
    bool isCyclic;            ///< some node needs itself through others and doesn't list itself
};

/// Closes the graph in one pass over its strongly connected components.
///
/// The result is that of Warshall's algorithm on the same bits, where only what a pass adds is counted and only a
/// diagonal bit that a pass adds is a cycle. So a ring all of whose members list themselves is none.
/// R. Tarjan, "Depth-first search and linear graph algorithms", SIAM J. Comput. 1 (1972).
/// Tests: tests/base/inrandomgraphtest.cpp.
InDependencyClosure closeDependencies(InDependencyGraph const& graph);

}  // namespace Vn
