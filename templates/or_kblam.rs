-- Kontenblatt with its postings: a sheet an account, by date, with the running balance. Postings that stand
-- alone are not in the month's figures: they are shown with a mark and enter neither balance nor sums.

report { id = "tervoKTOBLATT0.0", title = "Kontenblatt" }

local list = share("or_page")

list.upright { fontsize = 8, head = 3 }

style("title", { size = 11 })
style("subtitle", { size = 9 })

columns {
    { "datum", "Datum", 16 },
    { "nummer", "Nummer", 13, align = "right" },
    { "beleg", "Beleg", 18 },
    { "gegenkonto", "Gegen-\nkonto", 13 },
    { "text", "Buchungstext", 42 },
    { "satz", "%", 9, form = "rate", zero = "blank" },
    { "soll", "Soll", 20, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 20, form = "amount", sum = true, zero = "blank" },
    { "stand", "Saldo", 20, form = "amount" },
    { "seite", "", 4 },
    { "zeichen", "", 5 },
}

fields {
    { "konto", "Konto" },
    { "name", "Bezeichnung" },
    { "datum", "Datum" },
    { "nummer", "Buchungsnummer", form = "number" },
    { "beleg", "Beleg" },
    { "gegenkonto", "Gegenkonto" },
    { "text", "Buchungstext" },
    { "satz", "Steuersatz %", form = "rate" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
    { "saldo", "Saldo", form = "amount" },
    { "zaehlt", "Zählt", form = "flag" },
    { "split", "Teil einer Splitbuchung", form = "flag" },
}

list.carryGroup(1, "text")

local mandant = ""
local account, name = "", ""
local opening = { soll = 0, haben = 0 }
local saldo = 0

-- The balance without its sign, and the side that it stands on.
local function stand(cells)
    cells.stand = math.abs(saldo)
    cells.seite = saldo > 0 and "S" or saldo < 0 and "H" or nil
    return cells
end

record(0, {
    text("mandant", 0, 41),
    emit = function(r)
        mandant = r.mandant
        about { { "mandant", mandant } }
        list.head(mandant, "Kontenblatt")
    end,
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
        foot { left = mandant, center = "Sp: Splitbuchung · *: zählt nicht", right = "gedruckt am " .. today() }
        about { { "mandant", mandant }, { "zeitraum", r.zeitraum } }
        account, name = r.konto, r.name
        opening = { soll = r.soll, haben = r.haben }
        saldo = r.soll - r.haben
        local cells = { konto = account, name = name, text = "Vortrag", soll = r.soll, haben = r.haben,
                        saldo = saldo, zaehlt = true, split = false }
        data(cells)
        row("line", stand(cells))
    end,
    close = {
        rows = { "sum", "total" },
        emit = function(sum)
            row("sum", { text = "Umsatz des Zeitraums", soll = sum.soll - opening.soll,
                         haben = sum.haben - opening.haben })
            row("total", stand { text = "Summe mit Vortrag", soll = sum.soll, haben = sum.haben })
        end,
    },
})

record(2, {
    i32("nummer", 0),
    u32("zaehlt", 4),
    i32("split", 8),
    text("gegenkonto", 12, 8),
    text("beleg", 20, 11),
    date("datum", 31),
    text("text", 38, 40),
    amount("soll", 78),
    amount("haben", 91),
    rate("satz", 104),
    order = { "datum", "nummer" },
    rows = { "line" },
    emit = function(r)
        r.konto, r.name = account, name
        r.zaehlt = r.zaehlt ~= 0
        r.split = r.split ~= 0
        r.zeichen = (r.split and "Sp" or "") .. (r.zaehlt and "" or "*")
        if r.zaehlt then
            saldo = saldo + r.soll - r.haben
            r.saldo = saldo
            stand(r)
        end
        data(r)
        r.nummer = tostring(r.nummer)
        row("line", r)
        if not r.zaehlt then add { soll = -r.soll, haben = -r.haben } end
    end,
})

finish { empty = "Keine Konten in diesem Bereich." }
