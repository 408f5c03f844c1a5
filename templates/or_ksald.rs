-- Kostensaldenliste: what fell on each Kostenstelle in a period.

report { id = "tervoKOSALIST0.0", title = "Kostensaldenliste" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    head = 3,
    foot = 1,
}

columns {
    { "nummer", "Nummer", 18 },
    { "kuerzel", "Kürzel", 22 },
    { "name", "Kostenstelle", 50 },
    { "text", "Bemerkung", 60 },
    { "summe", "Betrag", 30, form = "amount", sum = true },
}

carry { column = "name", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("bereich", 91, 30),
    emit = function(r)
        head { left = "Kostensaldenliste", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { left = "Kostenstellen " .. r.bereich }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("nummer", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 31),
    text("text", 48, 41),
    amount("summe", 89),
    rows = { "line" },
    emit = function(r) row("line", r) end,
})

finish {
    rows = { "total" },
    emit = function(sum) row("total", { name = "Gesamtsumme", summe = sum.summe }) end,
}
