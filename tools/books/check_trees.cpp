#include "tools/books/year_check.h"

namespace books {

using namespace tools;
using namespace vark;

namespace {

// Reports give up a tree that is deeper.
constexpr int depthMax = 100;

} // namespace

// An account is looked up in a tree by the number as it stands there.
void YearCheck::CheckLeafText(const Tree &tree, const StructureRecord &record)
{
    const std::string text = FieldText(record.Text);
    if (text.size() == accountDigits && text.back() != ' ') return;
    Tell("baum", LayoutOf(tree.Id).Stem, std::to_string(record.Id), "Text",
         "die Kontonummer „" + text + "“ steht nicht rechtsbündig in sieben Zeichen");
}

void YearCheck::CheckGroup(const Tree &tree, const StructureRecord &record, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    const std::string key = std::to_string(record.Id);
    const std::string text = FieldText(record.Text);
    if (depth >= 0 && Trimmed(text).empty()) Tell("name", stem, key, "Text", "der Titel fehlt");
    if (Columns(text) > 27) Tell("baum", stem, key, "Text", "der Titel ist länger als 27 Zeichen");
    if (depth > 2) Tell("baum", stem, key, "Id", "es gibt nur drei Ebenen von Gruppen");
}

void YearCheck::WalkTree(Tree &tree, int32_t id, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    if (depth >= depthMax) {
        Tell("baum", stem, std::to_string(id), "Id",
             "der Baum ist tiefer als " + std::to_string(depthMax) + " Ebenen");
        return;
    }
    // Siblings in a loop and children by recursion: a level is long, a tree never deep.
    while (id != 0) {
        const auto found = tree.Nodes.find(id);
        if (found == tree.Nodes.end()) {
            Tell("baum", stem, std::to_string(id), "Id", "auf den Knoten wird verwiesen, es gibt ihn nicht");
            return;
        }
        Node &node = found->second;
        if (node.IsReached) {
            Tell("baum", stem, std::to_string(id), "Id", "der Knoten wird mehr als einmal erreicht");
            return;
        }
        node.IsReached = true;
        const StructureRecord &record = node.Record;
        if ((record.Art & StructureGruppe) != 0 || id == structureRoot) {
            CheckGroup(tree, record, depth);
            if (record.Child != 0) WalkTree(tree, record.Child, depth + 1);
        } else {
            if (record.Child != 0)
                Tell("baum", stem, std::to_string(id), "Child", "ein Konto hat keine Unterknoten");
            CheckLeafText(tree, record);
            const std::string number(Trimmed(FieldText(record.Text)));
            if ((record.Art & StructureGegenposten) != 0) {
                if (!tree.Second.emplace(number, id).second) {
                    Tell("baum", stem, std::to_string(id), "Text",
                         "das Konto " + number + " ist auf dieser Seite mehrfach Gegenposten");
                }
            } else {
                ++tree.Leaves[number];
            }
        }
        id = record.Next;
    }
}

void YearCheck::CheckTrees()
{
    Tree trees[] = {{TableGuvauf, ZuordnungGuv, {}, {}, {}, {}},
                    {TableBilaktau, ZuordnungAktiva, {}, {}, {}, {}},
                    {TableBilpasau, ZuordnungPassiva, {}, {}, {}, {}}};
    for (Tree &tree : trees) {
        const std::string &stem = LayoutOf(tree.Id).Stem;
        Check<StructureRecord>(tree.Id, [&](const StructureRecord &record) {
            if (record.Id == 0) {
                CheckLeafText(tree, record);
                tree.Outside.emplace_back(Trimmed(FieldText(record.Text)));
                if (record.Art != 0 || record.Next != 0 || record.Child != 0) {
                    Tell("baum", stem, "0", "Art",
                         "außerhalb des Baums steht nur ein Konto, nicht „" + FieldText(record.Text) + "“");
                }
            } else if (!tree.Nodes.emplace(int32_t{record.Id}, Node{record, false}).second) {
                Tell("baum", stem, std::to_string(record.Id), "Id", "die Nummer kommt mehrfach vor");
            }
        });
        if (tree.Nodes.count(structureRoot) == 0) {
            Tell("baum", stem, "1", "Id", "der oberste Knoten fehlt");
            continue;
        }
        const StructureRecord &root = tree.Nodes.at(structureRoot).Record;
        if ((root.Art & StructureGruppe) == 0)
            Tell("baum", stem, "1", "Art", "der oberste Knoten ist keine Gruppe");
        if (root.Next != 0) Tell("baum", stem, "1", "Next", "neben dem obersten Knoten steht ein weiterer");
        WalkTree(tree, structureRoot, -1);
        for (const auto &[id, node] : tree.Nodes) {
            if (!node.IsReached)
                Tell("baum", stem, std::to_string(id), "Id", "der Knoten hängt an keinem anderen");
        }
        for (const std::string &number : tree.Outside) {
            ++tree.Leaves[number];
        }
    }
    for (const Tree &tree : trees) {
        const std::string &stem = LayoutOf(tree.Id).Stem;
        std::map<std::string, const AccountState *> own;
        for (const AccountState &account : Accounts) {
            if (account.Kind == AccountKind::Sachkonto) own.emplace(account.Number, &account);
        }
        for (const auto &[number, count] : tree.Leaves) {
            const auto account = own.find(number);
            if (account == own.end()) {
                Tell("verweis", stem, number, "Text", "das Sachkonto gibt es nicht");
            } else if (account->second->Zuordnung != tree.Zuordnung) {
                Tell("zuordnung", stem, number, "Text",
                     "das Konto hat eine andere Zuordnung als diese Seite");
            }
            if (count > 1) Tell("baum", stem, number, "Text", "das Konto steht mehrfach auf dieser Seite");
        }
        for (const AccountState &account : Accounts) {
            if (account.Kind == AccountKind::Sachkonto && account.Zuordnung == tree.Zuordnung &&
                tree.Leaves.count(account.Number) == 0) {
                Tell("zuordnung", "sako", account.Number, "Zuordnung",
                     "das Konto hat keinen Platz in " + stem);
            }
        }
        // The second home of an account needs its first one on the other side.
        const Tree &other = trees[tree.Id == TableBilaktau ? 2 : 1];
        for (const auto &[number, id] : tree.Second) {
            if (tree.Id == TableGuvauf || other.Leaves.count(number) == 0) {
                Tell("baum", stem, std::to_string(id), "Art",
                     "zum Gegenposten " + number + " fehlt der Posten");
            }
        }
    }
}

} // namespace books
