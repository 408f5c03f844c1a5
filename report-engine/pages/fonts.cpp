#include "report-engine/pages/fonts.h"

#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

constexpr size_t cachePlaces = 4096; // some 4 MiB when every place is taken

uint64_t HashOf(int face, const char *text, size_t length)
{
    uint64_t hash = 0xCBF29CE484222325u + static_cast<uint64_t>(face);
    for (size_t i = 0; i < length; ++i) {
        hash = (hash ^ static_cast<unsigned char>(text[i])) * 0x100000001B3u;
    }
    return hash ^ (hash >> 29);
}

uint16_t FontNumber(Fonts &fonts, PangoFont *font)
{
    for (int i = 0; i < fonts.FontCount; ++i) {
        if (fonts.Used[i] == font) return static_cast<uint16_t>(i);
    }
    if (fonts.FontCount == maxFonts) return 0;
    const int number = fonts.FontCount++;
    fonts.Used[number] = static_cast<PangoFont *>(g_object_ref(font));
    fonts.Scaled[number] = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    return static_cast<uint16_t>(number);
}

// The bytes from the glyph's character to the next one; glyphs of one character share them.
void FindText(Glyph &glyph, const PangoGlyphString &string, int number, const PangoItem &item)
{
    const int begin = string.log_clusters[number];
    int end = item.length;
    bool isFirst = true;
    for (int i = 0; i < string.num_glyphs; ++i) {
        if (string.log_clusters[i] > begin && string.log_clusters[i] < end) end = string.log_clusters[i];
        if (i < number && string.log_clusters[i] == begin) isFirst = false;
    }
    glyph.TextAt = static_cast<uint16_t>(item.offset + begin);
    glyph.TextLength = static_cast<uint16_t>(isFirst ? end - begin : 0);
}

// Shapes into Scratch.
Run Shape(Fonts &fonts, int face, const char *text, size_t length)
{
    Run run = {0, 0, fonts.Scratch};
    GList *items =
        pango_itemize_with_base_dir(fonts.Context, PANGO_DIRECTION_LTR, text, 0, static_cast<int>(length),
                                    fonts.Faces[face].Attributes, nullptr);
    GList *ordered = pango_reorder_items(items);
    PangoGlyphString *string = pango_glyph_string_new();
    for (const GList *link = ordered; link != nullptr; link = link->next) {
        auto *item = static_cast<PangoItem *>(link->data);
        pango_shape_full(text + item->offset, item->length, text, static_cast<int>(length), &item->analysis,
                         string);
        const uint16_t font = FontNumber(fonts, item->analysis.font);
        for (int i = 0; i < string->num_glyphs && run.Count < maxGlyphs; ++i) {
            const PangoGlyphInfo &info = string->glyphs[i];
            const bool isMissing = (info.glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0;
            Glyph &glyph = fonts.Scratch[run.Count];
            FindText(glyph, *string, i, *item);
            glyph.Index = isMissing ? 0 : info.glyph;
            glyph.Font = font;
            glyph.Advance = static_cast<float>(info.geometry.width) / PANGO_SCALE;
            glyph.X = static_cast<float>(info.geometry.x_offset) / PANGO_SCALE;
            glyph.Y = static_cast<float>(info.geometry.y_offset) / PANGO_SCALE;
            run.Width += glyph.Advance;
            if (info.glyph != PANGO_GLYPH_EMPTY || glyph.Advance > 0) ++run.Count;
        }
    }
    pango_glyph_string_free(string);
    g_list_free(ordered);
    g_list_free_full(items, [](void *item) { pango_item_free(static_cast<PangoItem *>(item)); });
    return run;
}

Glyph ShapeFigure(Fonts &fonts, int face, const char *text)
{
    const Run run = Shape(fonts, face, text, std::strlen(text));
    return run.Count > 0 ? run.Glyphs[0] : Glyph{};
}

} // namespace

namespace {

// Latin letters and marks: what is read from left to right, so that words may be shaped each by itself.
bool IsPlain(const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isPunctuation = byte == 0xE2; // U+2000 to U+2FFF
        if (byte >= 0xD6 && !isPunctuation) return false;
    }
    return true;
}

// The glyph of what has one width and no neighbours that it would move for; null for any other character.
const Glyph *FigureFor(const Face &face, char character)
{
    if (character >= '0' && character <= '9') return &face.Figures[character - '0'];
    if (character == '.') return &face.Point;
    if (character == ',') return &face.Comma;
    return character == ' ' ? &face.Blank : nullptr;
}

void Append(Fonts &fonts, Run &line, const Glyph *glyphs, size_t count, size_t textAt)
{
    for (size_t i = 0; i < count && line.Count < maxGlyphs; ++i) {
        Glyph &placed = fonts.Line[line.Count++];
        placed = glyphs[i];
        placed.TextAt = static_cast<uint16_t>(placed.TextAt + textAt);
        line.Width += placed.Advance;
    }
}

Run ShapeWord(Fonts &fonts, int face, const char *text, size_t length)
{
    if (length > maxWord) return Shape(fonts, face, text, length);
    CachedWord &place = fonts.Cache[HashOf(face, text, length) % cachePlaces];
    if (place.Face != face + 1 || place.Length != length || std::memcmp(place.Text, text, length) != 0) {
        const Run run = Shape(fonts, face, text, length);
        if (run.Count > maxWord) return run;
        place.Face = static_cast<uint8_t>(face + 1);
        place.Length = static_cast<uint8_t>(length);
        place.Count = static_cast<uint8_t>(run.Count);
        place.Width = run.Width;
        std::memcpy(place.Text, text, length);
        std::memcpy(place.Glyphs, run.Glyphs, run.Count * sizeof(Glyph));
    }
    return {place.Width, place.Count, place.Glyphs};
}

} // namespace

void OpenFonts(Fonts &fonts, const char *family)
{
    fonts.Family = family;
    fonts.Map = pango_cairo_font_map_new();
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(fonts.Map), 72);
    fonts.Context = pango_font_map_create_context(fonts.Map);
    // Positions as the font has them, not those of some screen.
    cairo_font_options_t *options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(fonts.Context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(fonts.Context, FALSE);
    pango_context_set_language(fonts.Context, pango_language_from_string("de"));
    fonts.Cache = static_cast<CachedWord *>(g_malloc0(cachePlaces * sizeof(CachedWord)));
}

int FaceFor(Fonts &fonts, const Style &style, int32_t size)
{
    for (int i = 0; i < fonts.FaceCount; ++i) {
        const Face &face = fonts.Faces[i];
        if (face.Size == size && face.Bold == style.Bold && face.Italic == style.Italic) return i;
    }
    if (fonts.FaceCount == maxFaces) return 0;
    const int number = fonts.FaceCount++;
    Face &face = fonts.Faces[number];
    face.Size = size;
    face.Bold = style.Bold;
    face.Italic = style.Italic;
    // Not from a string: that would take "Condensed" at the end of a family's name for a width of its own.
    PangoFontDescription *description = pango_font_description_new();
    pango_font_description_set_family(description, fonts.Family);
    pango_font_description_set_absolute_size(description, size / 100.0 * PANGO_SCALE);
    if (style.Bold) pango_font_description_set_weight(description, PANGO_WEIGHT_BOLD);
    if (style.Italic) pango_font_description_set_style(description, PANGO_STYLE_ITALIC);
    face.Attributes = pango_attr_list_new();
    pango_attr_list_insert(face.Attributes, pango_attr_font_desc_new(description));
    // A German word is not joined across its parts ("Auflage"), and every glyph stays one character for
    // whoever searches or copies. Figures of one width keep their columns.
    pango_attr_list_insert(face.Attributes, pango_attr_font_features_new("liga=0, clig=0, tnum=1"));

    PangoFont *font = pango_font_map_load_font(fonts.Map, fonts.Context, description);
    pango_font_description_free(description);
    cairo_font_extents_t extents = {};
    if (font != nullptr) {
        cairo_scaled_font_extents(pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font)), &extents);
        g_object_unref(font);
    }
    face.Ascent = static_cast<float>(extents.ascent);
    face.Descent = static_cast<float>(extents.descent);
    char digit[2] = "0";
    for (int i = 0; i < 10; ++i) {
        digit[0] = static_cast<char>('0' + i);
        face.Figures[i] = ShapeFigure(fonts, number, digit);
    }
    face.Point = ShapeFigure(fonts, number, ".");
    face.Comma = ShapeFigure(fonts, number, ",");
    face.Blank = ShapeFigure(fonts, number, " ");
    face.Minus = ShapeFigure(fonts, number, "\u2212");
    return number;
}

Run ShapeText(Fonts &fonts, int face, const char *text, size_t length)
{
    if (!IsPlain(text, length)) return Shape(fonts, face, text, length);
    Run line = {0, 0, fonts.Line};
    for (size_t at = 0; at < length && line.Count + maxWord < maxGlyphs;) {
        if (const Glyph *figure = FigureFor(fonts.Faces[face], text[at])) {
            Append(fonts, line, figure, 1, at);
            ++at;
            continue;
        }
        size_t end = at + 1;
        while (end < length && FigureFor(fonts.Faces[face], text[end]) == nullptr &&
               end - at < maxGlyphs / 4) {
            ++end;
        }
        const Run word = ShapeWord(fonts, face, text + at, end - at);
        Append(fonts, line, word.Glyphs, word.Count, at);
        at = end;
    }
    return line;
}

Run SetNumber(Fonts &fonts, int face, const char *text, size_t length)
{
    const Face &from = fonts.Faces[face];
    Run run = {0, 0, fonts.Line};
    for (size_t i = 0; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) continue; // the rest of the minus sign
        const Glyph *figure = FigureFor(from, text[i]);
        Append(fonts, run, figure != nullptr ? figure : &from.Minus, 1, i);
    }
    return run;
}

} // namespace rs
