#include "tools/books/year_check.h"

namespace books {

using namespace tools;
using namespace vark;

void YearCheck::WalkTree(Tree &tree, int32_t id, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
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
        const std::string text = FieldText(record.Text);
        if ((record.Art & StructureGruppe) != 0) {
            if (Columns(text) > 27) {
                Tell("baum", stem, std::to_string(id), "Text", "der Titel ist länger als 27 Zeichen");
            }
            if (depth > 2)
                Tell("baum", stem, std::to_string(id), "Id", "es gibt nur drei Ebenen von Gruppen");
            if (record.Child != 0) WalkTree(tree, record.Child, depth + 1);
        } else {
            if (record.Child != 0)
                Tell("baum", stem, std::to_string(id), "Child", "ein Konto hat keine Unterknoten");
            const std::string number(Trimmed(text));
            if ((record.Art & StructureGegenposten) != 0) {
                tree.Second.emplace(number, id);
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
                tree.Outside.emplace_back(Trimmed(FieldText(record.Text)));
            } else if (!tree.Nodes.emplace(int32_t{record.Id}, Node{record, false}).second) {
                Tell("baum", stem, std::to_string(record.Id), "Id", "die Nummer kommt mehrfach vor");
            }
        });
        if (tree.Nodes.count(structureRoot) == 0) {
            Tell("baum", stem, "1", "Id", "der oberste Knoten fehlt");
            continue;
        }
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
