-- Kostenjournal: the cost lines of a period by date, with a bookmark for each month.

report { id = "tervoKJOURNAL0.0", title = "Kostenjournal" }

local list = share("or_page")

list.across()

style("note", { like = "text", italic = true })

columns {
    { "datum", "Datum", 18 },
    { "beleg", "Beleg", 20 },
    { "konto", "Konto", 16 },
    { "kost1", "1.", 18, group = "Kostenobjekt" },
    { "kost2", "2.", 20, group = "Kostenobjekt" },
    { "text", "Buchungstext", 96 },
    { "kennzeichen", "Kz.", 8, align = "center" },
    { "stapel", "Stapel", 12, align = "center" },
    { "soll", "Soll", 32, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 32, form = "amount", sum = true, zero = "blank" },
}

fields {
    { "datum", "Datum" },
    { "beleg", "Beleg" },
    { "konto", "Konto" },
    { "kost1", "1. Kostenobjekt" },
    { "kost2", "2. Kostenobjekt" },
    { "text", "Buchungstext" },
    { "kennzeichen", "Kennzeichen", form = "flag" },
    { "imStapel", "Im Stapel", form = "flag" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
}

list.carry("text")

local mitStapel = false

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    u32("inkl", 91),
    emit = function(r)
        mitStapel = r.inkl ~= 0
        about { { "mandant", r.mandant }, { "zeitraum", r.zeitraum } }
        list.head(r.mandant, "Kostenjournal")
        head { left = mitStapel and "einschließlich Stapel" or "ohne Stapel", center = r.zeitraum }
        if not mitStapel then
            column("stapel", { width = 0 })
            column("text", { width = 108 })
        end
    end,
})

local monate = {
    "Januar", "Februar", "März", "April", "Mai", "Juni",
    "Juli", "August", "September", "Oktober", "November", "Dezember",
}
local monat = ""

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
        if r.datum:sub(4) ~= monat and r.datum ~= "" then
            monat = r.datum:sub(4)
            local name = monate[tonumber(r.datum:sub(4, 5))]
            if name ~= nil then bookmark(name .. " " .. r.datum:sub(7)) end
        end
        r.kennzeichen = r.gesetzt ~= 0
        r.imStapel = r.endgueltig == 0
        data(r)
        r.kennzeichen = list.mark(r.gesetzt)
        r.stapel = r.imStapel and "×" or nil
        row("line", r)
    end,
})

finish {
    rows = { "total", "sum", "note" },
    empty = "Keine Kostenbuchungen im Zeitraum.",
    emit = function(sum)
        local saldo = sum.soll - sum.haben
        sum.text = "Gesamtsumme"
        row("total", sum)
        row("sum", {
            text = "Saldo",
            soll = saldo >= 0 and saldo or nil,
            haben = saldo < 0 and -saldo or nil,
        })
        local legend = "Kz. ×: mit dem Kennzeichen der Kostenschablone."
        if mitStapel then legend = legend .. " Stapel ×: noch nicht endgültig gebucht." end
        row("note", legend)
    end,
}
