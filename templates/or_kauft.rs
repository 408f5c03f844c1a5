-- Kostenaufteilung: on which Sachkonten the costs of each Kostenstelle arose, apart for lines with and without
-- the mark of the Kostenschablone.

report { id = "tervoKAUFT0.0", title = "Kostenaufteilung" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    foot = 1,
}

columns {
    { "konto", "Konto", 18 },
    { "name", "Bezeichnung", 76 },
    { "mitSoll", "Soll", 30, form = "amount", group = "Mit Kennzeichen", sum = true, zero = "blank" },
    { "mitHaben", "Haben", 30, form = "amount", group = "Mit Kennzeichen", sum = true, zero = "blank" },
    { "ohneSoll", "Soll", 30, form = "amount", group = "Ohne Kennzeichen", sum = true, zero = "blank" },
    { "ohneHaben", "Haben", 30, form = "amount", group = "Ohne Kennzeichen", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 30, form = "amount", group = "Saldo", sum = true, zero = "blank" },
    { "saldoHaben", "Haben", 30, form = "amount", group = "Saldo", sum = true, zero = "blank" },
}

carry { level = 1, column = "name", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("bereich", 91, 30),
    emit = function(r)
        head { left = r.mandant, center = "Kostenaufteilung", right = "Seite {page} von {pages}" }
        head { left = "Kostenstellen " .. r.bereich, center = r.zeitraum }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local nummer = ""

record(1, {
    text("nummer", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 31),
    level = 1,
    rows = { "head" },
    emit = function(r)
        nummer = r.nummer
        bookmark(r.nummer .. " " .. r.name)
        row("head", "Kostenstelle " .. r.nummer .. "   " .. r.kuerzel .. "   " .. r.name)
    end,
    close = {
        rows = { "sum" },
        emit = function(sum)
            sum.name = "Summe Kostenstelle " .. nummer
            row("sum", sum)
        end,
    },
})

record(2, {
    text("konto", 0, 8),
    text("name", 8, 41),
    amount("mitSoll", 49),
    amount("mitHaben", 62),
    amount("ohneSoll", 75),
    amount("ohneHaben", 88),
    rows = { "line" },
    emit = function(r)
        local saldo = r.mitSoll - r.mitHaben + r.ohneSoll - r.ohneHaben
        if saldo >= 0 then r.saldoSoll = saldo else r.saldoHaben = -saldo end
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.name = "Gesamtsumme"
        row("total", sum)
    end,
}
