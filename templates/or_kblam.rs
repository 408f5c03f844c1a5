-- Kontenblatt with its postings: a sheet an account, with the running balance.

report { id = "tervoKTOBLATT0.0", title = "Kontenblatt" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8,
    head = 3,
    foot = 1,
}

style("title", { size = 11 })
style("subtitle", { size = 9 })

columns {
    { "datum", "Datum", 17 },
    { "nummer", "Nummer", 12 },
    { "beleg", "Beleg", 19 },
    { "gegenkonto", "Gegen-\nkonto", 13 },
    { "text", "Buchungstext", 46 },
    { "satz", "%", 9, form = "rate", zero = "blank" },
    { "soll", "Soll", 21, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 21, form = "amount", sum = true, zero = "blank" },
    { "saldo", "Saldo", 22, form = "amount" },
}

carry { level = 1, column = "text", down = "Übertrag", up = "Übertrag" }

local mandant = ""
local saldo = 0

record(0, {
    text("mandant", 0, 41),
    emit = function(r) mandant = r.mandant end,
})

record(1, {
    text("konto", 0, 8),
    text("name", 8, 41),
    text("art", 49, 20),
    text("zeitraum", 69, 50),
    amount("soll", 119),
    amount("haben", 132),
    i32("seiten", 145),
    level = 1,
    newpage = true,
    rows = { "line" },
    emit = function(r)
        sheet(r.seiten)
        bookmark(r.konto .. " " .. r.name)
        head { left = r.art .. " " .. r.konto .. "   " .. r.name, right = "Blatt {sheet}" }
        head { left = mandant, right = "Seite {page} von {pages}" }
        head { left = "Kontenblatt " .. r.zeitraum }
        foot { left = mandant, right = "gedruckt am " .. today() }
        saldo = r.soll - r.haben
        row("line", { text = "Vortrag", soll = r.soll, haben = r.haben, saldo = saldo })
    end,
    close = {
        rows = { "total" },
        emit = function(sum) row("total", { text = "Summe", soll = sum.soll, haben = sum.haben, saldo = saldo }) end,
    },
})

record(2, {
    i32("nummer", 0),
    u32("einzeln", 4),
    u32("split", 8),
    text("gegenkonto", 12, 8),
    text("beleg", 20, 11),
    date("datum", 31),
    text("text", 38, 40),
    amount("soll", 78),
    amount("haben", 91),
    rate("satz", 104),
    rows = { "line" },
    emit = function(r)
        saldo = saldo + r.soll - r.haben
        r.saldo = saldo
        r.nummer = tostring(r.nummer)
        row("line", r)
    end,
})
