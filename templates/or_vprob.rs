-- Umsatzsteuerverprobung: the accounts of each Kennzahl of the return, then the tax accounts.

report { id = "tervoUSTVAVERPROB0.0", title = "Umsatzsteuerverprobung" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    foot = 1,
}

style("abschnitt", { like = "head", size = 11, height = 8 })

columns {
    { "kennzahl", "Kennzahl", 18, align = "center" },
    { "konto", "Konto", 20 },
    { "kuerzel", "Kürzel", 26 },
    { "name", "Bezeichnung", 80 },
    { "betrag", "Soll − Haben", 36, form = "amount", sum = true },
}

carry { level = 2, column = "name", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 80),
    emit = function(r)
        head { left = "Umsatzsteuerverprobung", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("titel", 0, 50),
    i32("kennzahlen", 50),
    level = 1,
    rows = { "abschnitt" },
    emit = function(r)
        bookmark(r.titel)
        row("abschnitt", r.titel)
    end,
})

local gruppe = ""

-- The group of a Kennzahl has no text: its lines name it.
record(2, {
    text("titel", 0, 50),
    level = 2,
    rows = { "head" },
    emit = function(r)
        gruppe = r.titel
        if r.titel ~= "" then
            bookmark(r.titel)
            row("head", r.titel)
        end
    end,
    close = {
        rows = { "sum" },
        emit = function(sum) row("sum", { name = "Summe " .. gruppe, betrag = sum.betrag }) end,
    },
})

record(3, {
    text("konto", 0, 8),
    text("kuerzel", 8, 10),
    text("name", 18, 41),
    i32("nummer", 59),
    amount("betrag", 63),
    rows = { "line" },
    emit = function(r)
        r.kennzahl = tostring(r.nummer)
        gruppe = "Kennzahl " .. r.kennzahl
        row("line", r)
    end,
})

record(4, {
    text("konto", 0, 8),
    text("kuerzel", 8, 10),
    text("name", 18, 41),
    amount("betrag", 59),
    rows = { "line" },
    emit = function(r) row("line", r) end,
})
