-- Kontenblatt without its postings: a line an account with what was carried forward, what was posted and the
-- balance.

report { id = "tervoKTOBLATT0.0", title = "Kontenblatt" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    foot = 1,
}

columns {
    { "konto", "Konto", 16 },
    { "name", "Bezeichnung", 62 },
    { "art", "Art", 22 },
    { "vortragSoll", "Soll", 28, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "vortragHaben", "Haben", 28, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "soll", "Soll", 28, form = "amount", group = "Buchungen", sum = true, zero = "blank" },
    { "haben", "Haben", 28, form = "amount", group = "Buchungen", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 28, form = "amount", group = "Saldo", sum = true, zero = "blank" },
    { "saldoHaben", "Haben", 28, form = "amount", group = "Saldo", sum = true, zero = "blank" },
}

carry { column = "name", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

local mandant = ""
local zeitraum = nil
local account = nil
local soll, haben = 0, 0

record(0, {
    text("mandant", 0, 41),
    emit = function(r) mandant = r.mandant end,
})

-- The line of an account stands at its end, when its postings are known.
record(1, {
    text("konto", 0, 8),
    text("name", 8, 41),
    text("art", 49, 20),
    text("zeitraum", 69, 50),
    amount("vortragSoll", 119),
    amount("vortragHaben", 132),
    level = 1,
    emit = function(r)
        account = r
        soll, haben = 0, 0
        if r.zeitraum ~= zeitraum then
            zeitraum = r.zeitraum
            head { left = mandant, center = "Kontenblätter ohne Buchungen", right = "Seite {page} von {pages}" }
            head { center = zeitraum }
            foot { left = mandant, right = "gedruckt am " .. today() }
        end
    end,
    close = {
        rows = { "line" },
        emit = function()
            account.soll = soll
            account.haben = haben
            local saldo = account.vortragSoll - account.vortragHaben + soll - haben
            if saldo >= 0 then account.saldoSoll = saldo else account.saldoHaben = -saldo end
            row("line", account)
        end,
    },
})

record(2, {
    amount("soll", 78),
    amount("haben", 91),
    emit = function(r)
        soll = soll + r.soll
        haben = haben + r.haben
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.name = "Gesamtsumme"
        row("total", sum)
    end,
}
