// Text as glyphs. A text is shaped once for each font it is set in and kept; amounts, of which no two are
// alike, are put together from the figures of their font, which all have one width.
#pragma once

#include "report-engine/definition.h"

#include <pango/pangocairo.h>

#include <cstddef>
#include <cstdint>

namespace rs {

inline constexpr int maxFaces = 48;       // sizes and weights of the report's font
inline constexpr int maxFonts = 128;      // with those that stand in for characters it lacks
inline constexpr size_t maxWord = 32;     // bytes and glyphs of a word that is kept
inline constexpr size_t maxGlyphs = 2048; // of any run; longer texts were cut before

// The bytes of the text that a glyph stands for go with it into the file, for whoever searches or copies:
// what a font says about its glyphs is not enough to find that.
struct Glyph {
    uint32_t Index;
    uint16_t Font;
    uint16_t TextAt;
    uint16_t TextLength; // 0 for the further glyphs of one character
    float Advance;       // points
    float X;             // offsets from where it stands
    float Y;
};

struct Run {
    float Width;
    size_t Count;
    const Glyph *Glyphs; // until the next text is shaped
};

struct Face {
    int32_t Size; // hundredths of a point
    bool Bold;
    bool Italic;
    float Ascent;
    float Descent;
    PangoAttrList *Attributes;
    Glyph Figures[10];
    Glyph Point;
    Glyph Comma;
    Glyph Blank;
    Glyph Minus; // each with the text that it stands for at 0
};

struct CachedWord {
    uint8_t Face; // number + 1, 0 for an empty place
    uint8_t Length;
    uint8_t Count;
    float Width;
    char Text[maxWord];
    Glyph Glyphs[maxWord];
};

struct Fonts {
    PangoFontMap *Map;
    PangoContext *Context;
    const char *Family;
    int FaceCount;
    int FontCount;
    Face Faces[maxFaces];
    PangoFont *Used[maxFonts];
    cairo_scaled_font_t *Scaled[maxFonts];
    CachedWord *Cache;
    Glyph Line[maxGlyphs];    // the run given out last
    Glyph Scratch[maxGlyphs]; // a word being shaped
};

void OpenFonts(Fonts &fonts, const char *family);

// The number of the face of a style.
int FaceFor(Fonts &fonts, const Style &style, int32_t size);

Run ShapeText(Fonts &fonts, int face, const char *text, size_t length);

// A figure as WriteHundredths and WriteNumber print it.
Run SetNumber(Fonts &fonts, int face, const char *text, size_t length);

} // namespace rs
