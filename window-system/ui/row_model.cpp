#include "window-system/ui/row_model.h"

#include <string>
#include <vector>

namespace {

// Where each text begins; behind the last one, where it ends.
struct Texts {
    std::string Letters;
    std::vector<uint32_t> Starts = {0};
};

struct RowModel {
    GObject Parent;
    Texts *Rows;
};

struct RowModelClass {
    GObjectClass Parent;
};

const Texts &TextsOf(gpointer model) { return *static_cast<RowModel *>(model)->Rows; }

GType ItemType(GListModel * /*model*/) { return GTK_TYPE_STRING_OBJECT; }

guint ItemCount(GListModel *model) { return static_cast<guint>(TextsOf(model).Starts.size() - 1); }

gpointer MakeItem(GListModel *model, guint row)
{
    if (row >= ItemCount(model)) return nullptr;
    return gtk_string_object_new(std::string(ui::RowText(model, row)).c_str());
}

void SetUpInterface(GListModelInterface *interface)
{
    interface->get_item_type = ItemType;
    interface->get_n_items = ItemCount;
    interface->get_item = MakeItem;
}

G_DEFINE_TYPE_WITH_CODE(RowModel, row_model, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(G_TYPE_LIST_MODEL, SetUpInterface))

void Finalize(GObject *object)
{
    delete static_cast<RowModel *>(static_cast<gpointer>(object))->Rows;
    G_OBJECT_CLASS(row_model_parent_class)->finalize(object);
}

void row_model_class_init(RowModelClass *type) { type->Parent.finalize = Finalize; }

void row_model_init(RowModel *model) { model->Rows = new Texts; }

} // namespace

namespace ui {

GListModel *MakeRowModel() { return G_LIST_MODEL(g_object_new(row_model_get_type(), nullptr)); }

void TakeRows(GListModel *model, varkui::FrameReader &reader, uint32_t count)
{
    Texts &texts = *static_cast<RowModel *>(static_cast<gpointer>(model))->Rows;
    texts.Letters.clear();
    texts.Starts.assign(1, 0);
    texts.Letters.reserve(static_cast<size_t>(reader.End - reader.At));
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t length = 0;
        const char *text = varkui::TakeText(reader, length);
        if (reader.Bad) break;
        texts.Letters.append(text, length);
        texts.Starts.push_back(static_cast<uint32_t>(texts.Letters.size()));
    }
}

std::string_view RowText(GListModel *model, guint row)
{
    const Texts &texts = TextsOf(model);
    return std::string_view(texts.Letters)
        .substr(texts.Starts[row], texts.Starts[row + 1] - texts.Starts[row]);
}

} // namespace ui
