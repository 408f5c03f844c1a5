-- Kostenstellenauswertung: the lines of each Kostenstelle with the running balance.

report { id = "tervoKOSTENBLATT0.0", title = "Kostenstellenauswertung" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    head = 3,
    foot = 1,
}

style("title", { size = 11 })
style("subtitle", { size = 9 })

columns {
    { "datum", "Datum", 18 },
    { "beleg", "Beleg", 20 },
    { "konto", "Konto", 16 },
    { "gegen", "Kosten-\nobjekt", 16 },
    { "text", "Buchungstext", 58 },
    { "zusatz", "Kostentext", 56 },
    { "soll", "Soll", 29, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 29, form = "amount", sum = true, zero = "blank" },
    { "saldo", "Saldo", 30, form = "amount" },
}

carry { level = 1, column = "text", down = "Übertrag", up = "Übertrag" }

local mandant = ""
local withLines = true
local saldo = 0

record(0, {
    text("mandant", 0, 30),
    i32("mitBuchungen", 30),
    emit = function(r)
        mandant = r.mandant
        withLines = r.mitBuchungen ~= 0
    end,
})

record(1, {
    text("nummer", 0, 8),
    text("name", 8, 31),
    text("zeitraum", 39, 50),
    amount("vortrag", 89),
    level = 1,
    newpage = true,
    rows = { "line" },
    emit = function(r)
        sheet(0)
        bookmark(r.nummer .. " " .. r.name)
        head { left = "Kostenstelle " .. r.nummer .. "   " .. r.name, right = "Blatt {sheet}" }
        head { left = mandant, center = "Kostenstellenauswertung", right = "Seite {page} von {pages}" }
        head { left = r.zeitraum }
        foot { left = mandant, right = "gedruckt am " .. today() }
        saldo = r.vortrag
        if saldo >= 0 then r.soll = saldo else r.haben = -saldo end
        row("line", { text = "Vortrag", soll = r.soll, haben = r.haben, saldo = saldo })
    end,
    close = {
        rows = { "total" },
        emit = function(sum) row("total", { text = "Summe", soll = sum.soll, haben = sum.haben, saldo = saldo }) end,
    },
})

record(2, {
    text("konto", 0, 8),
    text("gegen", 8, 8),
    text("beleg", 16, 11),
    date("datum", 27),
    text("text", 34, 36),
    text("zusatz", 70, 41),
    amount("soll", 111),
    amount("haben", 124),
    i32("kennzeichen", 137),
    rows = { "line" },
    emit = function(r)
        saldo = saldo + r.soll - r.haben
        r.saldo = saldo
        if withLines then row("line", r) else add(r) end
    end,
})
