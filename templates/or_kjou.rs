-- Kostenjournal: the cost lines of a period by date.

report { id = "tervoKJOURNAL0.0", title = "Kostenjournal" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    foot = 1,
}

columns {
    { "datum", "Datum", 18 },
    { "beleg", "Beleg", 20 },
    { "konto", "Konto", 16 },
    { "kost1", "1.", 18, group = "Kostenobjekt" },
    { "kost2", "2.", 20, group = "Kostenobjekt" },
    { "text", "Buchungstext", 98 },
    { "kennzeichen", "Kz.", 8, align = "center" },
    { "stapel", "Stapel", 12, align = "center" },
    { "soll", "Soll", 32, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 32, form = "amount", sum = true, zero = "blank" },
}

carry { column = "text", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    u32("stapel", 91),
    emit = function(r)
        local art = r.stapel ~= 0 and "einschließlich Stapel" or "ohne Stapel"
        head { left = r.mandant, center = "Kostenjournal", right = "Seite {page} von {pages}" }
        head { left = art, center = r.zeitraum }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    date("datum", 0),
    text("beleg", 7, 9),
    text("konto", 16, 8),
    text("kost1", 24, 8),
    text("kost2", 32, 8),
    text("text", 40, 81),
    amount("soll", 121),
    amount("haben", 134),
    u32("gesetzt", 147),
    u32("endgueltig", 151),
    rows = { "line" },
    emit = function(r)
        r.kennzeichen = r.gesetzt ~= 0 and "×" or nil
        r.stapel = r.endgueltig == 0 and "×" or nil
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.text = "Gesamtsumme"
        row("total", sum)
    end,
}
