-- Zusammenfassende Meldung: the turnover of each Debitor with a number of another country.

report { id = "tervoZM0.0", title = "Zusammenfassende Meldung" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    foot = 1,
}

columns {
    { "konto", "Konto", 16 },
    { "kuerzel", "Kürzel", 22 },
    { "name", "Name", 52 },
    { "land", "Land", 10 },
    { "ustid", "USt-IdNr.", 36 },
    { "umsatz", "Bemessungsgrundlage", 34, form = "amount", sum = true },
    { "kennzeichen", "Kz.", 10, align = "center" },
}

carry { column = "name", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    emit = function(r)
        head { left = "Zusammenfassende Meldung", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 26),
    text("ustid", 43, 16),
    amount("umsatz", 59),
    i32("gesetzt", 72),
    rows = { "line" },
    emit = function(r)
        r.land = r.ustid:sub(1, 2)
        r.ustid = r.ustid:sub(3)
        r.kennzeichen = r.gesetzt ~= 0 and "×" or nil
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum) row("total", { name = "Summe, " .. sum.count .. " Meldungen", umsatz = sum.umsatz }) end,
}
