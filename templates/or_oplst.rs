-- OP-Liste: the open items by Skonto date, by Termin or by account, with the sums of each group where all its
-- items are in one currency.

report { id = "tervoOPLISTE0.0", title = "OP-Liste" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 7.5,
    foot = 1,
}

columns {
    { "konto", "Konto", 14 },
    { "name", "Name", 40 },
    { "beleg1", "1.", 18, group = "Beleg" },
    { "beleg2", "2.", 18, group = "Beleg" },
    { "datum", "Datum", 16 },
    { "termin", "Termin", 16 },
    { "skonto", "Skonto", 16, group = "Skonto" },
    { "satz", "%", 10, form = "rate", group = "Skonto", zero = "blank" },
    { "text", "Text", 43 },
    { "art", "Zahlungsart", 18 },
    { "betrag", "1.", 25, form = "amount", group = "Betrag", sum = true },
    { "betrag2", "2.", 25, form = "amount", group = "Betrag", sum = true, zero = "blank" },
    { "waehrung", "Währ.", 12 },
}

local grouping = 0
local groupText = ""
local groupCurrency, allCurrency = nil, nil -- false once there are several

local function follow(kept, currency)
    if kept == nil then return currency end
    if kept == currency then return kept end
    return false
end

record(0, {
    text("mandant", 0, 41),
    text("art", 41, 30),
    text("bereich", 71, 30),
    i32("gruppierung", 101),
    i32("debitoren", 105),
    emit = function(r)
        local names = { [0] = "nach Skonto", [1] = "nach Termin" }
        grouping = r.gruppierung
        local konten = r.art
        if r.bereich ~= "" then konten = konten .. " " .. r.bereich end
        head {
            left = r.mandant,
            center = "Offene Posten " .. (r.debitoren ~= 0 and "Debitoren" or "Kreditoren"),
            right = "Seite {page} von {pages}",
        }
        head { left = konten, center = names[grouping] or "nach Kontonummer" }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local function sumRow(style, title, sum, currency)
    if currency == false then
        row(style, { name = title .. ": mehrere Währungen" })
    else
        row(style, { name = title, betrag = sum.betrag, betrag2 = sum.betrag2, waehrung = currency or "" })
    end
end

record(1, {
    text("konto", 0, 8),
    date("datum", 8),
    level = 1,
    rows = { "head" },
    emit = function(r)
        if grouping == 0 then
            groupText = "Skonto bis " .. r.datum
        elseif grouping == 1 then
            groupText = "Termin " .. r.datum
        else
            groupText = "Konto " .. r.konto
        end
        groupCurrency = nil
        bookmark(groupText)
        row("head", groupText)
    end,
    close = {
        rows = { "sum" },
        emit = function(sum) sumRow("sum", "Summe " .. groupText, sum, groupCurrency) end,
    },
})

record(2, {
    text("konto", 0, 8),
    text("beleg1", 8, 10),
    text("name", 18, 26),
    text("beleg2", 44, 10),
    date("datum", 54),
    date("termin", 61),
    date("skonto", 68),
    text("text", 75, 40),
    i32("gesetzt", 115),
    amount("betrag", 119),
    text("konto2", 132, 8),
    text("konto3", 140, 8),
    rate("satz", 148),
    i32("wert1", 154),
    i32("wert2", 158),
    amount("betrag3", 162),
    amount("betrag4", 175),
    amount("betrag2", 188),
    i32("wert3", 201),
    text("waehrung", 205, 5),
    text("art", 210, 30),
    rows = { "line" },
    emit = function(r)
        groupCurrency = follow(groupCurrency, r.waehrung)
        allCurrency = follow(allCurrency, r.waehrung)
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum) sumRow("total", "Gesamtsumme, " .. sum.count .. " Posten", sum, allCurrency) end,
}
