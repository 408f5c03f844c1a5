-- Umsatzstatistik: the turnover of each Debitor or Kreditor in a period.

report { id = "tervoUMSTAT0.0", title = "Umsatzstatistik" }

local list = share("or_page")

list.upright()

columns {
    { "konto", "Konto", 14 },
    { "kuerzel", "Kürzel", 18 },
    { "name", "Name", 56 },
    { "ort", "Anschrift", 64 },
    { "umsatz", "Umsatz", 28, form = "amount", sum = true },
}

fields {
    { "konto", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name1", "Name 1" },
    { "name2", "Name 2" },
    { "strasse", "Straße" },
    { "land", "Land" },
    { "plz", "PLZ" },
    { "ort", "Ort" },
    { "umsatz", "Umsatz", form = "amount" },
}

list.carry("name")

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("art", 91, 30),
    text("bereich", 121, 30),
    text("auswahl", 151, 81),
    i32("netto", 232),
    emit = function(r)
        local art = r.netto ~= 0 and "Nettobeträge" or "Bruttobeträge"
        -- All of a kind are told in the singular, since both limits are open.
        local konten = r.bereich ~= "" and list.joined(r.art, r.bereich) or r.art:sub(1, 7) .. "en"
        about {
            { "mandant", r.mandant },
            { "zeitraum", r.zeitraum },
            { "konten", konten },
            { "auswahl", r.auswahl },
            { "betraege", art },
        }
        list.head(r.mandant, "Umsatzstatistik")
        head { left = { konten, r.auswahl }, center = r.zeitraum, right = art }
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
        data(r)
        r.name = r.name2 ~= "" and r.name1 .. ", " .. r.name2 or r.name1
        local ort = list.joined(r.plz, r.ort)
        if r.land ~= "" and ort ~= "" then ort = r.land .. "-" .. ort end
        r.ort = r.strasse ~= "" and ort ~= "" and r.strasse .. ", " .. ort or r.strasse .. ort
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    empty = "Keine Umsätze im Zeitraum.",
    emit = function(sum)
        local konten = sum.count == 1 and "1 Konto" or sum.count .. " Konten"
        row("total", { name = "Gesamtumsatz, " .. konten, umsatz = sum.umsatz })
    end,
}
