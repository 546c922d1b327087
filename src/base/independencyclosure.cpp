// The transitive closure of the dependency graph, in three steps.
//
// 1. ComponentWalk finds the strongly connected components, dependencies before dependants (Tarjan's algorithm).
// 2. RowFiller gives all members of a component one row of bits: their own bits, if there is more than one member,
//    and the rows of what they depend on, which are complete already because of that order.
// 3. closeDependencies() counts the bits of each row and finds the cycles.
//
// So the rows are built in one pass instead of Warshall's three nested loops; the result is the same bit for bit,
// and a test compares both on random graphs. A mistake here would break the start order of every program.
#include <base/independencyclosure_p.h>

#include <algorithm>
#include <span>

namespace Vn
{
namespace
{
/// No node has this number.
constexpr unsigned unvisited = 0xFFFFFFFF;

/// The dependencies that `node` lists, with repetitions.
std::span<unsigned const> targetsOf(InDependencyGraph const& graph, unsigned node)
{
    return std::span(graph.targets).subspan(graph.starts[node], graph.starts[node + 1] - graph.starts[node]);
}

/// Tarjan's walk, with a stack of its own, so that a chain of thousands of packages doesn't overflow the thread's
/// stack. Calls `visit` with the members of each component, after the components that it depends on.
class ComponentWalk
{
public:
    explicit ComponentWalk(InDependencyGraph const& graph)
        : _graph(graph), _order(graph.size(), unvisited), _lowest(graph.size()), _isOpen(graph.size())
    {
        _open.reserve(graph.size());
        _path.reserve(graph.size());
    }

    template <class Visit>
    void run(Visit const& visit)
    {
        for (unsigned node = 0; node < _graph.size(); ++node)
            if (_order[node] == unvisited)
                walkFrom(node, visit);
    }

private:
    /// A node under way and the next of its targets to look at: a frame of the recursion that is written out here.
    struct Step
    {
        unsigned node;
        unsigned nextTarget;
    };

    /// First sight of a node: it gets its number and is on both stacks.
    void enter(unsigned node)
    {
        _order[node] = _lowest[node] = _entered++;
        _isOpen[node] = true;
        _open.push_back(node);
        _path.push_back({node, _graph.starts[node]});
    }

    /// Visits all that `root` reaches and that was not visited before.
    template <class Visit>
    void walkFrom(unsigned root, Visit const& visit)
    {
        enter(root);
        while (!_path.empty()) {
            Step& step = _path.back();
            const unsigned node = step.node;
            if (step.nextTarget < _graph.starts[node + 1]) {
                // One target at a time, then back to the loop: the target may have put a step on top.
                const unsigned target = _graph.targets[step.nextTarget++];
                if (_order[target] == unvisited)
                    enter(target);
                else if (_isOpen[target])
                    _lowest[node] = std::min(_lowest[node], _order[target]);
                continue;
            }
            // All targets are done: tell the caller how far up this node reaches.
            _path.pop_back();
            if (!_path.empty())
                _lowest[_path.back().node] = std::min(_lowest[_path.back().node], _lowest[node]);
            if (_lowest[node] == _order[node])
                closeComponent(node, visit);
        }
    }

    /// `root` reaches nothing above itself, so it and all above it on the stack are one component.
    template <class Visit>
    void closeComponent(unsigned root, Visit const& visit)
    {
        const auto first = std::find(_open.rbegin(), _open.rend(), root).base() - 1;
        const std::span<unsigned const> members(first, _open.end());
        visit(members);
        for (unsigned member : members)
            _isOpen[member] = false;
        _open.erase(first, _open.end());
    }

    InDependencyGraph const& _graph;
    /// Number of each node in order of first sight.
    std::vector<unsigned> _order;
    /// Lowest number that is known to be reached from the node within its component.
    std::vector<unsigned> _lowest;
    /// Whether the node is on `_open`.
    std::vector<char> _isOpen;
    /// Nodes whose component isn't complete.
    std::vector<unsigned> _open;
    /// From the root to the node under way.
    std::vector<Step> _path;
    unsigned _entered = 0;
};

/// Fills the rows of the components, in the order in which the walk finds them.
class RowFiller
{
public:
    RowFiller(InDependencyGraph const& graph, InBitMatrix& rows)
        : _graph(graph), _rows(rows), _position(graph.size(), 0)
    {}

    /// Members of a larger component depend on each other and on themselves, so one row serves all.
    void fill(std::span<unsigned const> members)
    {
        const unsigned row = members.front();
        if (members.size() > 1)
            for (unsigned member : members)
                _rows.set(row, member);
        for (unsigned member : members)
            addTargets(row, targetsOf(_graph, member));
        for (unsigned member : members.subspan(1))
            _rows.merge(member, row);
        ++_filled;
        for (unsigned member : members)
            _position[member] = _filled;
    }

private:
    /// Adds what one member lists.
    void addTargets(unsigned row, std::span<unsigned const> targets)
    {
        // The component filled last usually depends on most of the others: merged first, it spares merging them one
        // by one.
        unsigned last = row;
        for (unsigned target : targets)
            if (_position[target] > _position[last])
                last = target;
        if (last != row)
            add(row, last);
        for (unsigned target : targets)
            add(row, target);
    }

    /// Adds `target` and what it depends on. Rows are complete closures, so a bit that is set has brought its own
    /// with it. A target of the same component isn't filled yet: its bit is set already, or it is the row itself,
    /// which lists itself.
    void add(unsigned row, unsigned target)
    {
        if (_rows.test(row, target))
            return;
        if (_position[target] != 0)
            _rows.merge(row, target);
        _rows.set(row, target);
    }

    InDependencyGraph const& _graph;
    InBitMatrix& _rows;
    std::vector<unsigned> _position;  ///< of a node's component, from 1; 0 while it isn't filled
    unsigned _filled = 0;
};
}  // namespace

/// The counts follow the ordering rule: listed dependencies count with repetitions, inherited ones once, the node
/// itself only if it lists itself.
InDependencyClosure closeDependencies(InDependencyGraph const& graph)
{
    InDependencyClosure closure{InBitMatrix(graph.size()), std::vector<int>(graph.size()), false};
    RowFiller filler(graph, closure.dependencies);
    ComponentWalk(graph).run([&filler](std::span<unsigned const> members) { filler.fill(members); });

    std::vector<unsigned> lastListedBy(graph.size(), unvisited);
    for (unsigned node = 0; node < graph.size(); ++node) {
        int repeated = 0;
        for (unsigned target : targetsOf(graph, node)) {
            repeated += lastListedBy[target] == node;
            lastListedBy[target] = node;
        }
        // Intended: a node that lists itself is no cycle, not even on a cycle all of whose nodes list themselves. The
        // start order is defined that way; do not mend.
        const bool isOnCycle = closure.dependencies.test(node, node) && lastListedBy[node] != node;
        closure.counts[node] = closure.dependencies.count(node) + repeated - isOnCycle;
        closure.isCyclic |= isOnCycle;
    }
    return closure;
}

}  // namespace Vn
