-- Kostenstellenauswertung: the lines of each Kostenstelle by date, with the running balance; or, without lines,
-- a list of the Kostenstellen with what was carried forward, what fell on them and the balance.

report { id = "tervoKOSTENBLATT0.0", title = "Kostenstellenauswertung" }

local list = share("or_page")

list.across { head = 3 }

style("title", { size = 11 })
style("subtitle", { size = 9 })

columns {
    { "datum", "Datum", 18 },
    { "beleg", "Beleg", 20 },
    { "konto", "Konto", 16 },
    { "gegen", "Kosten-\nobjekt", 16 },
    { "text", "Buchungstext", 50 },
    { "zusatz", "Kostentext", 38 },
    { "vortrag", "Vortrag", 26, form = "amount" },
    { "soll", "Soll", 28, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 28, form = "amount", sum = true, zero = "blank" },
    { "stand", "Saldo", 28, form = "amount" },
    { "seite", "", 5 },
}

fields {
    { "nummer", "Kostenstelle" },
    { "name", "Bezeichnung" },
    { "datum", "Datum" },
    { "beleg", "Beleg" },
    { "konto", "Konto" },
    { "gegen", "Kostenobjekt" },
    { "text", "Buchungstext" },
    { "zusatz", "Kostentext" },
    { "vortrag", "Vortrag", form = "amount" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
    { "saldo", "Saldo", form = "amount" },
}

list.carryGroup(1, "text")

local mandant = ""
local withLines = true
local number, name = "", ""
local zeitraum = nil
local opening = 0
local saldo = 0

local function stand(cells)
    cells.stand = math.abs(saldo)
    cells.seite = saldo > 0 and "S" or saldo < 0 and "H" or nil
    return cells
end

local function sided(amount)
    if amount >= 0 then return { soll = amount, haben = 0 } end
    return { soll = 0, haben = -amount }
end

record(0, {
    text("mandant", 0, 30),
    i32("mitBuchungen", 30),
    emit = function(r)
        mandant = r.mandant
        withLines = r.mitBuchungen ~= 0
        if withLines then
            column("vortrag", { width = 0 })
            column("text", { width = 58 })
            column("zusatz", { width = 56 })
        else
            column("datum", { title = "Nummer" })
            column("text", { title = "Kostenstelle" })
            for _, name in ipairs { "beleg", "konto", "gegen", "zusatz" } do column(name, { width = 0 }) end
        end
        about { { "mandant", mandant } }
        list.head(mandant, "Kostenstellenauswertung")
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
        about { { "mandant", mandant }, { "zeitraum", r.zeitraum } }
        number, name = r.nummer, r.name
        opening = r.vortrag
        saldo = r.vortrag
        if not withLines then
            samepage()
            if zeitraum ~= r.zeitraum then
                zeitraum = r.zeitraum
                list.head(mandant, "Kostenstellenauswertung ohne Buchungen")
                head { center = zeitraum }
            end
            return
        end
        sheet(0)
        bookmark(number .. " " .. name)
        head { left = "Kostenstelle " .. number .. "   " .. name, right = "Blatt {sheet}" }
        head { left = mandant, center = "Kostenstellenauswertung", right = "Seite {page} von {pages}" }
        head { left = r.zeitraum }
        foot { left = mandant, right = "gedruckt am " .. today() }
        local cells = sided(opening)
        cells.nummer, cells.name, cells.text, cells.vortrag, cells.saldo = number, name, "Vortrag", opening, saldo
        data(cells)
        row("line", stand(cells))
    end,
    close = {
        rows = { "text", "sum", "total" },
        emit = function(sum)
            if not withLines then
                local cells = { nummer = number, name = name, vortrag = opening, soll = sum.soll, haben = sum.haben,
                                saldo = saldo }
                data(cells)
                cells.datum, cells.text = number, name
                row("text", stand(cells))
                return
            end
            local before = sided(opening)
            row("sum", { text = "Umsatz des Zeitraums", soll = sum.soll - before.soll,
                         haben = sum.haben - before.haben })
            row("total", stand { text = "Summe mit Vortrag", soll = sum.soll, haben = sum.haben })
        end,
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
    order = { "datum" },
    rows = { "line" },
    emit = function(r)
        saldo = saldo + r.soll - r.haben
        r.saldo = saldo
        r.nummer, r.name = number, name
        if not withLines then
            add { soll = r.soll, haben = r.haben }
            return
        end
        data(r)
        row("line", stand(r))
    end,
})

finish { empty = "Keine Kostenstelle in diesem Bereich." }
