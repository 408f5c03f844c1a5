-- Summen- und Saldenliste: one line an account with Vortrag, the month, the months so far, the sums and the
-- balance they leave.

report { id = "tervoSUSALIST0.0", title = "Summen- und Saldenliste" }

local list = share("or_page")

list.across()

columns {
    { "konto", "Konto", 14 },
    { "name", "Bezeichnung", 50 },
    { "vortragSoll", "Soll", 21, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "vortragHaben", "Haben", 21, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "monatSoll", "Soll", 21, form = "amount", group = "Monat", sum = true, zero = "blank" },
    { "monatHaben", "Haben", 21, form = "amount", group = "Monat", sum = true, zero = "blank" },
    { "kumSoll", "Soll", 21, form = "amount", group = "Kumuliert", sum = true, zero = "blank" },
    { "kumHaben", "Haben", 21, form = "amount", group = "Kumuliert", sum = true, zero = "blank" },
    { "summeSoll", "Soll", 21, form = "amount", group = "Summe", sum = true, zero = "blank" },
    { "summeHaben", "Haben", 21, form = "amount", group = "Summe", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 21, form = "amount", group = "Saldo", sum = true, zero = "blank" },
    { "saldoHaben", "Haben", 21, form = "amount", group = "Saldo", sum = true, zero = "blank" },
}

list.carry("name")

record(0, {
    text("mandant", 0, 41),
    date("bis", 41),
    text("monat", 48, 20),
    text("art", 68, 30),
    text("bereich", 98, 30),
    emit = function(r)
        about { { "mandant", r.mandant }, { "per", r.bis }, { "monat", r.monat } }
        list.head(r.mandant, "Summen- und Saldenliste")
        head {
            left = list.joined(r.art, r.bereich),
            center = "per " .. r.bis .. " (Monat: " .. r.monat .. ")",
        }
    end,
})

local class = nil -- the first figure of the accounts in hand

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 41),
    amount("vortragSoll", 58),
    amount("vortragHaben", 71),
    amount("monatSoll", 84),
    amount("monatHaben", 97),
    amount("kumSoll", 110),
    amount("kumHaben", 123),
    amount("summeSoll", 136),
    amount("summeHaben", 149),
    u32("bewegt", 162),
    rows = { "line" },
    emit = function(r)
        if r.bewegt == 0 then return end
        if r.konto:sub(1, 1) ~= class then
            class = r.konto:sub(1, 1)
            bookmark("Kontenklasse " .. class)
        end
        local saldo = r.summeSoll - r.summeHaben
        if saldo >= 0 then r.saldoSoll = saldo else r.saldoHaben = -saldo end
        row("line", r)
    end,
})

list.total("name", "Keine Konten mit Buchungen.")
