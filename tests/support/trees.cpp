#include "tests/support/trees.h"

namespace vark::test {

namespace {

bool TakeEnd(std::string &text, const std::string &end)
{
    if (!text.ends_with(end)) return false;
    text.erase(text.size() - end.size());
    return true;
}

StructureRecord NodeOf(std::string text)
{
    StructureRecord node{};
    if (TakeEnd(text, " gegen")) node.Art = StructureGegenposten;
    if (TakeEnd(text, " +")) node.Summenzeile = 1;
    const bool isAccount = text.find_first_not_of("0123456789") == std::string::npos;
    if (!isAccount) node.Art |= StructureGruppe;
    SetText(node.Text, isAccount ? Justified(text) : text);
    return node;
}

} // namespace

void InsertTree(Books &books, int mandant, TableId table, const Lines &lines, const std::string &year)
{
    StructureRecord root{};
    root.Id = structureRoot;
    root.Art = StructureGruppe;
    std::vector<StructureRecord> nodes = {root};
    std::vector<StructureRecord> outside;
    std::vector<size_t> last = {0}; // by depth: the latest node there, the root before all others
    for (const std::string &line : lines) {
        const size_t depth = line.find_first_not_of(' ') / 2 + 1;
        const std::string text = line.substr(line.find_first_not_of(' '));
        if (text.starts_with("ohne ")) {
            outside.push_back(NodeOf(text.substr(5)));
            continue;
        }
        StructureRecord node = NodeOf(text);
        node.Id = static_cast<int32_t>(nodes.size()) + 1;
        if (depth < last.size()) {
            nodes[last[depth]].Next = node.Id;
        } else {
            nodes[last.at(depth - 1)].Child = node.Id;
        }
        last.resize(depth);
        last.push_back(nodes.size());
        nodes.push_back(node);
    }
    for (const StructureRecord &node : nodes) {
        books.Insert(mandant, table, node, year);
    }
    for (const StructureRecord &node : outside) {
        books.Insert(mandant, table, node, year);
    }
}

} // namespace vark::test
