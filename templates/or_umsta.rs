-- Umsatzstatistik: the turnover of each Debitor or Kreditor in a period.

report { id = "tervoUMSTAT0.0", title = "Umsatzstatistik" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    head = 3,
    foot = 1,
}

columns {
    { "konto", "Konto", 15 },
    { "name", "Name", 62 },
    { "ort", "Anschrift", 73 },
    { "umsatz", "Umsatz", 30, form = "amount", sum = true },
}

carry { column = "name", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("art", 91, 30),
    text("bereich", 121, 30),
    text("auswahl", 151, 81),
    i32("netto", 232),
    emit = function(r)
        local konten = r.art
        if r.bereich ~= "" then konten = konten .. " " .. r.bereich end
        local art = r.netto ~= 0 and "Nettobeträge" or "Bruttobeträge"
        head { left = "Umsatzstatistik", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { left = konten, right = r.auswahl ~= "" and art .. ", " .. r.auswahl or art }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    text("name1", 17, 26),
    text("name2", 43, 26),
    amount("umsatz", 69),
    text("strasse", 82, 31),
    text("plz", 113, 7),
    text("land", 120, 4),
    text("ort", 124, 32),
    rows = { "line" },
    emit = function(r)
        r.name = r.name2 ~= "" and r.name1 .. ", " .. r.name2 or r.name1
        local ort = r.plz .. " " .. r.ort
        if r.land ~= "" then ort = r.land .. "-" .. ort end
        r.ort = r.strasse ~= "" and r.strasse .. ", " .. ort or ort
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum) row("total", { name = "Gesamtumsatz, " .. sum.count .. " Konten", umsatz = sum.umsatz }) end,
}
