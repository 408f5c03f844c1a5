#include "tools/books/check_trees.h"

#include "tools/books/check_reading.h"
#include "tools/common/texts.h"

namespace books {

using namespace tools;
using namespace vark;

namespace {

struct Node {
    vark::StructureRecord Record;
    bool IsReached;
};

struct CheckedTree {
    vark::TableId Id;
    int16_t Zuordnung;
    std::map<int32_t, Node> Nodes;
    std::vector<std::string> Outside;      // accounts of records with Id 0
    std::map<std::string, int> Leaves;     // accounts by how often they have an ordinary leaf
    std::map<std::string, int32_t> Second; // accounts with a Gegenposten leaf, and its node
};

// Reports give up a tree that is deeper.
constexpr int depthMax = 100;

// An account is looked up in a tree by the number as it stands there.
void CheckLeafText(YearCheck &year, const CheckedTree &tree, const StructureRecord &record)
{
    const std::string text = FieldText(record.Text);
    if (text.size() == accountDigits && text.back() != ' ') return;
    year.Tell("baum", LayoutOf(tree.Id).Stem, std::to_string(record.Id), "Text",
              "die Kontonummer „" + text + "“ steht nicht rechtsbündig in sieben Zeichen");
}

void CheckGroup(YearCheck &year, const CheckedTree &tree, const StructureRecord &record, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    const std::string key = std::to_string(record.Id);
    const std::string text = FieldText(record.Text);
    if (depth >= 0 && Trimmed(text).empty()) year.Tell("name", stem, key, "Text", "der Titel fehlt");
    if (Columns(text) > 27) year.Tell("baum", stem, key, "Text", "der Titel ist länger als 27 Zeichen");
    if (depth > 2) year.Tell("baum", stem, key, "Id", "es gibt nur drei Ebenen von Gruppen");
}

void WalkTree(YearCheck &year, CheckedTree &tree, int32_t id, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    if (depth >= depthMax) {
        year.Tell("baum", stem, std::to_string(id), "Id",
                  "der Baum ist tiefer als " + std::to_string(depthMax) + " Ebenen");
        return;
    }
    // Siblings in a loop and children by recursion: a level is long, a tree never deep.
    while (id != 0) {
        const auto found = tree.Nodes.find(id);
        if (found == tree.Nodes.end()) {
            year.Tell("baum", stem, std::to_string(id), "Id",
                      "auf den Knoten wird verwiesen, es gibt ihn nicht");
            return;
        }
        Node &node = found->second;
        if (node.IsReached) {
            year.Tell("baum", stem, std::to_string(id), "Id", "der Knoten wird mehr als einmal erreicht");
            return;
        }
        node.IsReached = true;
        const StructureRecord &record = node.Record;
        if ((record.Art & StructureGruppe) != 0 || id == structureRoot) {
            CheckGroup(year, tree, record, depth);
            if (record.Child != 0) WalkTree(year, tree, record.Child, depth + 1);
        } else {
            if (record.Child != 0)
                year.Tell("baum", stem, std::to_string(id), "Child", "ein Konto hat keine Unterknoten");
            CheckLeafText(year, tree, record);
            const std::string number(Trimmed(FieldText(record.Text)));
            if ((record.Art & StructureGegenposten) != 0) {
                if (!tree.Second.emplace(number, id).second) {
                    year.Tell("baum", stem, std::to_string(id), "Text",
                              "das Konto " + number + " ist auf dieser Seite mehrfach Gegenposten");
                }
            } else {
                ++tree.Leaves[number];
            }
        }
        id = record.Next;
    }
}

// The leaves of a tree against the accounts of its side.
void CompareTree(YearCheck &year, const CheckedTree &tree, const CheckedTree &other)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    std::map<std::string, const AccountState *> own;
    for (const AccountState &account : year.Accounts) {
        if (account.Kind == AccountKind::Sachkonto) own.emplace(account.Number, &account);
    }
    for (const auto &[number, count] : tree.Leaves) {
        const auto account = own.find(number);
        if (account == own.end()) {
            year.Tell("verweis", stem, number, "Text", "das Sachkonto gibt es nicht");
        } else if (account->second->Zuordnung != tree.Zuordnung) {
            year.Tell("zuordnung", stem, number, "Text",
                      "das Konto hat eine andere Zuordnung als diese Seite");
        }
        if (count > 1) year.Tell("baum", stem, number, "Text", "das Konto steht mehrfach auf dieser Seite");
    }
    for (const AccountState &account : year.Accounts) {
        if (account.Kind == AccountKind::Sachkonto && account.Zuordnung == tree.Zuordnung &&
            tree.Leaves.count(account.Number) == 0) {
            year.Tell("zuordnung", "sako", account.Number, "Zuordnung",
                      "das Konto hat keinen Platz in " + stem);
        }
    }
    // The second home of an account needs its first one on the other side.
    for (const auto &[number, id] : tree.Second) {
        if (tree.Id == TableGuvauf || other.Leaves.count(number) == 0) {
            year.Tell("baum", stem, std::to_string(id), "Art",
                      "zum Gegenposten " + number + " fehlt der Posten");
        }
    }
}

} // namespace

void CheckTrees(YearCheck &year)
{
    CheckedTree trees[] = {{TableGuvauf, ZuordnungGuv, {}, {}, {}, {}},
                           {TableBilaktau, ZuordnungAktiva, {}, {}, {}, {}},
                           {TableBilpasau, ZuordnungPassiva, {}, {}, {}, {}}};
    for (CheckedTree &tree : trees) {
        const std::string &stem = LayoutOf(tree.Id).Stem;
        Check<StructureRecord>(year, tree.Id, [&](const StructureRecord &record) {
            if (record.Id == 0) {
                CheckLeafText(year, tree, record);
                tree.Outside.emplace_back(Trimmed(FieldText(record.Text)));
                if (record.Art != 0 || record.Next != 0 || record.Child != 0) {
                    year.Tell("baum", stem, "0", "Art",
                              "außerhalb des Baums steht nur ein Konto, nicht „" + FieldText(record.Text) +
                                  "“");
                }
            } else if (!tree.Nodes.emplace(int32_t{record.Id}, Node{record, false}).second) {
                year.Tell("baum", stem, std::to_string(record.Id), "Id", "die Nummer kommt mehrfach vor");
            }
        });
        if (!year.AreRead({tree.Id})) continue;
        if (tree.Nodes.count(structureRoot) == 0) {
            year.Tell("baum", stem, "1", "Id", "der oberste Knoten fehlt");
            continue;
        }
        const StructureRecord &root = tree.Nodes.at(structureRoot).Record;
        if ((root.Art & StructureGruppe) == 0)
            year.Tell("baum", stem, "1", "Art", "der oberste Knoten ist keine Gruppe");
        if (root.Next != 0)
            year.Tell("baum", stem, "1", "Next", "neben dem obersten Knoten steht ein weiterer");
        WalkTree(year, tree, structureRoot, -1);
        for (const auto &[id, node] : tree.Nodes) {
            if (!node.IsReached)
                year.Tell("baum", stem, std::to_string(id), "Id", "der Knoten hängt an keinem anderen");
        }
        for (const std::string &number : tree.Outside) {
            ++tree.Leaves[number];
        }
    }
    if (!year.AreRead({TableSako})) return;
    for (const CheckedTree &tree : trees) {
        if (year.AreRead({tree.Id})) CompareTree(year, tree, trees[tree.Id == TableBilaktau ? 2 : 1]);
    }
}

} // namespace books
