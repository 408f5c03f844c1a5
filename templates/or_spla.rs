-- Kontenplan of the Sachkonten, each with the place it has in Bilanz and GuV.

report { id = "tervoSAKTOPLAN0.0", title = "Kontenplan" }

local list = share("or_page")

list.across()

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
    { "sperre", "lösch-\nbar", 10, align = "center" },
    { "angelegt", "Angelegt", 17 },
}

fields {
    { "konto", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name", "Bezeichnung" },
    { "liste", "Gliederung" },
    { "gruppe", "Gruppe" },
    { "steuer", "Steuer" },
    { "satz", "Steuersatz %", form = "rate" },
    { "fest", "Steuersatz fest", form = "flag" },
    { "kosten", "Kostenrechnung", form = "flag" },
    { "kennzahl", "Kennzahl", form = "number" },
    { "kennzeichen", "Kennzeichen", form = "flag" },
    { "loeschbar", "Löschbar", form = "flag" },
    { "angelegt", "Angelegt" },
}

record(0, {
    text("mandant", 0, 41),
    text("art", 41, 30),
    text("bereich", 71, 30),
    emit = function(r)
        about { { "mandant", r.mandant }, { "konten", r.art } }
        list.head(r.mandant, "Kontenplan")
        head { left = r.art, center = r.bereich }
    end,
})

local place = nil -- the list in hand

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    u32("loeschmarke", 17),
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
        if r.liste ~= place then
            bookmark(r.liste)
            place = r.liste
        end
        data {
            konto = r.konto,
            kuerzel = r.kuerzel,
            name = r.name,
            liste = r.liste,
            gruppe = r.gruppe,
            steuer = r.steuer,
            satz = r.satz,
            fest = r.fest ~= 0,
            kosten = r.kosten ~= 0,
            kennzahl = r.kennzahl ~= 0 and r.kennzahl or nil,
            kennzeichen = r.kennzeichen ~= 0,
            loeschbar = r.loeschmarke ~= 0,
            angelegt = r.angelegt,
        }
        r.fest = list.mark(r.fest)
        r.kosten = list.mark(r.kosten)
        r.kennzeichen = list.mark(r.kennzeichen)
        r.kennzahl = r.kennzahl ~= 0 and tostring(r.kennzahl) or nil
        r.sperre = list.mark(r.loeschmarke)
        row("line", r)
    end,
})

finish { empty = "Keine Konten in diesem Bereich." }
