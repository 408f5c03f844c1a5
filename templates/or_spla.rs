-- Kontenplan of the Sachkonten, each with the place it has in Bilanz and GuV.

report { id = "tervoSAKTOPLAN0.0", title = "Kontenplan" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    foot = 1,
}

columns {
    { "konto", "Konto", 15 },
    { "kuerzel", "Kürzel", 20 },
    { "name", "Bezeichnung", 56 },
    { "liste", "Gliederung", 26 },
    { "gruppe", "Gruppe", 44 },
    { "steuer", "Steuer", 28 },
    { "satz", "%", 10, form = "rate", zero = "blank" },
    { "fest", "Satz\nfest", 10, align = "center" },
    { "kosten", "Kosten-\nrechnung", 14, align = "center" },
    { "kennzahl", "Kenn-\nzahl", 11, align = "center" },
    { "kennzeichen", "Kenn-\nzeichen", 12, align = "center" },
    { "sperre", "ge-\nsperrt", 10, align = "center" },
    { "angelegt", "Angelegt", 17 },
}

record(0, {
    text("mandant", 0, 41),
    text("art", 41, 30),
    text("bereich", 71, 30),
    emit = function(r)
        head { left = r.mandant, center = "Kontenplan", right = "Seite {page} von {pages}" }
        head { left = r.art, center = r.bereich }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local function mark(value) return value ~= 0 and "×" or nil end

local list = nil

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    u32("gesperrt", 17),
    date("angelegt", 21),
    text("name", 28, 41),
    text("liste", 69, 30),
    text("gruppe", 99, 26),
    text("steuer", 125, 40),
    rate("satz", 165),
    u32("fest", 171),
    u32("kennzeichen", 175),
    i32("kennzahl", 179),
    u32("kosten", 183),
    rows = { "line" },
    emit = function(r)
        if r.liste ~= list then
            bookmark(r.liste)
            list = r.liste
        end
        r.fest = mark(r.fest)
        r.kosten = mark(r.kosten)
        r.kennzeichen = mark(r.kennzeichen)
        r.kennzahl = r.kennzahl ~= 0 and tostring(r.kennzahl) or nil
        r.sperre = mark(r.gesperrt)
        row("line", r)
    end,
})
