#include <base/independencyclosure_p.h>

#include <algorithm>
#include <span>

namespace Vn
{
namespace
{
constexpr unsigned unvisited = 0xFFFFFFFF;

std::span<unsigned const> needsOf(InDependencyGraph const& graph, unsigned node)
{
    return std::span(graph.targets).subspan(graph.starts[node], graph.starts[node + 1] - graph.starts[node]);
}

/// Tarjan's walk, with a stack of its own so that a long chain of packages costs no stack frames. Components come out
/// with those that they need before them.
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
    struct Step
    {
        unsigned node;
        unsigned nextTarget;
    };

    void enter(unsigned node)
    {
        _order[node] = _lowest[node] = _entered++;
        _isOpen[node] = true;
        _open.push_back(node);
        _path.push_back({node, _graph.starts[node]});
    }

    template <class Visit>
    void walkFrom(unsigned root, Visit const& visit)
    {
        enter(root);
        while (!_path.empty()) {
            Step& step = _path.back();
            const unsigned node = step.node;
            if (step.nextTarget < _graph.starts[node + 1]) {
                const unsigned target = _graph.targets[step.nextTarget++];
                if (_order[target] == unvisited)
                    enter(target);
                else if (_isOpen[target])
                    _lowest[node] = std::min(_lowest[node], _order[target]);
                continue;
            }
            _path.pop_back();
            if (!_path.empty())
                _lowest[_path.back().node] = std::min(_lowest[_path.back().node], _lowest[node]);
            if (_lowest[node] == _order[node])
                closeComponent(node, visit);
        }
    }

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
    std::vector<unsigned> _order;
    std::vector<unsigned> _lowest;
    std::vector<char> _isOpen;
    std::vector<unsigned> _open;
    std::vector<Step> _path;
    unsigned _entered = 0;
};

/// Fills the rows of the components, in the order in which the walk gives them.
class RowFiller
{
public:
    RowFiller(InDependencyGraph const& graph, InBitMatrix& needs)
        : _graph(graph), _needs(needs), _position(graph.size(), 0)
    {}

    void fill(std::span<unsigned const> members)
    {
        const unsigned row = members.front();
        if (members.size() > 1)
            for (unsigned member : members)
                _needs.set(row, member);
        for (unsigned member : members)
            addNeeds(row, needsOf(_graph, member));
        for (unsigned member : members.subspan(1))
            _needs.merge(member, row);
        ++_filled;
        for (unsigned member : members)
            _position[member] = _filled;
    }

private:
    void addNeeds(unsigned row, std::span<unsigned const> targets)
    {
        // The one filled last needs most of the others, as a rule, and then saves their merging.
        unsigned last = row;
        for (unsigned target : targets)
            if (_position[target] > _position[last])
                last = target;
        if (last != row)
            add(row, last);
        for (unsigned target : targets)
            add(row, target);
    }

    /// Rows hold whole closures, so a bit that is set has brought its own needs with it. A target of the same component
    /// isn't filled yet: its bit stands already, or it is the row itself, listed by itself.
    void add(unsigned row, unsigned target)
    {
        if (_needs.test(row, target))
            return;
        if (_position[target] != 0)
            _needs.merge(row, target);
        _needs.set(row, target);
    }

    InDependencyGraph const& _graph;
    InBitMatrix& _needs;
    std::vector<unsigned> _position;  ///< of a node's component, from 1; 0 while it isn't filled
    unsigned _filled = 0;
};
}  // namespace

InDependencyClosure closeDependencies(InDependencyGraph const& graph)
{
    InDependencyClosure closure{InBitMatrix(graph.size()), std::vector<int>(graph.size()), false};
    RowFiller filler(graph, closure.needs);
    ComponentWalk(graph).run([&filler](std::span<unsigned const> members) { filler.fill(members); });

    std::vector<unsigned> lastListedBy(graph.size(), unvisited);
    for (unsigned node = 0; node < graph.size(); ++node) {
        int repeated = 0;
        for (unsigned target : needsOf(graph, node)) {
            repeated += lastListedBy[target] == node;
            lastListedBy[target] = node;
        }
        const bool isOnRing = closure.needs.test(node, node) && lastListedBy[node] != node;
        closure.counts[node] = closure.needs.count(node) + repeated - isOnRing;
        closure.isCyclic |= isOnRing;
    }
    return closure;
}

}  // namespace Vn
