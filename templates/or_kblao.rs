-- Kontenblatt without its postings: a line an account with what was carried forward, what was posted and the
-- balance. Postings that stand alone are not in the month's figures and do not count here either.

report { id = "tervoKTOBLATT0.0", title = "Kontenblatt" }

local list = share("or_page")

list.across()

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

fields {
    { "konto", "Konto" },
    { "name", "Bezeichnung" },
    { "art", "Art" },
    { "vortragSoll", "Vortrag Soll", form = "amount" },
    { "vortragHaben", "Vortrag Haben", form = "amount" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
    { "saldo", "Saldo", form = "amount" },
}

list.carry("name")

local mandant = ""
local zeitraum = nil
local account = nil

record(0, {
    text("mandant", 0, 41),
    emit = function(r)
        mandant = r.mandant
        about { { "mandant", mandant } }
        list.head(mandant, "Kontenblätter ohne Buchungen")
    end,
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
        r.soll, r.haben = 0, 0
        if r.zeitraum ~= zeitraum then
            zeitraum = r.zeitraum
            about { { "mandant", mandant }, { "zeitraum", zeitraum } }
            list.head(mandant, "Kontenblätter ohne Buchungen")
            head { center = zeitraum }
        end
    end,
    close = {
        rows = { "line" },
        emit = function()
            account.saldo = account.vortragSoll - account.vortragHaben + account.soll - account.haben
            if account.saldo >= 0 then
                account.saldoSoll = account.saldo
            else
                account.saldoHaben = -account.saldo
            end
            data(account)
            row("line", account)
        end,
    },
})

record(2, {
    u32("zaehlt", 4),
    amount("soll", 78),
    amount("haben", 91),
    emit = function(r)
        if r.zaehlt == 0 then return end
        account.soll = account.soll + r.soll
        account.haben = account.haben + r.haben
    end,
})

list.total("name", "Keine Konten in diesem Bereich.")
