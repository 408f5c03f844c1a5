-- OP-Liste: the open items by the last day of their Skonto, by the day they are due, or by account; each with the days
-- that it is overdue, and the sums of every currency by itself.

report { id = "tervoOPLISTE0.0", title = "OP-Liste" }

local list = share("or_page")

list.across { fontsize = 7.5 }

columns {
    { "konto", "Konto", 14 },
    { "name", "Name", 38 },
    { "beleg1", "1.", 17, group = "Beleg" },
    { "beleg2", "2.", 17, group = "Beleg" },
    { "datum", "Datum", 16 },
    { "termin", "Fällig", 16 },
    { "tage", "Tage", 10, form = "number" },
    { "skonto", "bis", 16, group = "Skonto" },
    { "satz", "%", 10, form = "rate", group = "Skonto", zero = "blank" },
    { "text", "Text", 38 },
    { "art", "Zahlungsart", 18 },
    { "betrag", "Offen", 25, form = "amount", sum = true },
    { "betrag2", "2. Betrag", 25, form = "amount", sum = true, zero = "blank" },
    { "waehrung", "Währ.", 11 },
}

fields {
    { "gruppe", "Gruppe" },
    { "konto", "Konto" },
    { "name", "Name" },
    { "beleg1", "Beleg 1" },
    { "beleg2", "Beleg 2" },
    { "datum", "Datum" },
    { "termin", "Fällig" },
    { "tage", "Tage überfällig", form = "number" },
    { "skonto", "Skonto bis" },
    { "satz", "Skontosatz", form = "rate" },
    { "text", "Text" },
    { "art", "Zahlungsart" },
    { "betrag", "Offener Betrag", form = "amount" },
    { "betrag2", "2. Betrag", form = "amount" },
    { "waehrung", "Währung" },
    { "konto2", "Konto 2" },
    { "konto3", "Konto 3" },
    { "gesetzt", "Kennzeichen", form = "flag" },
    { "wert1", "Wert 1", form = "number" },
    { "wert2", "Wert 2", form = "number" },
    { "wert3", "Wert 3", form = "number" },
    { "betrag3", "3. Betrag", form = "amount" },
    { "betrag4", "4. Betrag", form = "amount" },
}

local mostCurrencies = 4
local titles = { [0] = "nach Skontofrist", [1] = "nach Fälligkeit", [2] = "nach Konten" }
local grouping = 0
local group = nil -- the group in hand: title, number of items, sums by currency
local all = { count = 0, currencies = {} }

-- Days from the beginning of a common calendar to a date "TT.MM.JJJJ".
local function dayNumber(date)
    local day, month, year = tonumber(date:sub(1, 2)), tonumber(date:sub(4, 5)), tonumber(date:sub(7, 10))
    if month <= 2 then year, month = year - 1, month + 12 end
    return 365 * year + year // 4 - year // 100 + year // 400 + (153 * (month - 3) + 2) // 5 + day
end

local now = dayNumber(today())

local function overdue(termin)
    local days = termin ~= "" and now - dayNumber(termin) or 0
    return days > 0 and days or nil
end

-- Adds an item to the sums of a group, each currency by itself in the order in which they came.
local function enter(sums, r)
    sums.count = sums.count + 1
    for _, known in ipairs(sums.currencies) do
        if known.waehrung == r.waehrung then
            known.betrag, known.betrag2 = known.betrag + r.betrag, known.betrag2 + r.betrag2
            return
        end
    end
    table.insert(sums.currencies, { waehrung = r.waehrung, betrag = r.betrag, betrag2 = r.betrag2 })
end

-- Rows of sums, one a currency; where there are more than have room, the last says so.
local function sumRows(style, title, sums)
    for number, sum in ipairs(sums.currencies) do
        if number == mostCurrencies and #sums.currencies > mostCurrencies then
            row(style, { name = "weitere Währungen siehe oben" })
            return
        end
        row(style, {
            name = number == 1 and title or "", betrag = sum.betrag, betrag2 = sum.betrag2, waehrung = sum.waehrung,
        })
    end
end

-- Items without a day come first, before any head: their group is begun and closed by its neighbours.
local function begin(title, hasNoHead)
    group = { title = title, count = 0, currencies = {}, hasNoHead = hasNoHead }
    bookmark(title)
    row("head", title)
end

local function finishGroup()
    if group ~= nil and group.count > 1 then sumRows("sum", "Summe " .. group.title, group) end
end

record(0, {
    text("mandant", 0, 41),
    text("art", 41, 30),
    text("bereich", 71, 30),
    i32("gruppierung", 101),
    i32("debitoren", 105),
    emit = function(r)
        grouping = r.gruppierung
        local order = titles[grouping] or titles[2]
        local whose = r.debitoren ~= 0 and "Debitoren" or "Kreditoren"
        about { { "mandant", r.mandant }, { "konten", list.joined(whose, r.bereich) }, { "ordnung", order } }
        list.head(r.mandant, "Offene Posten " .. whose)
        head { left = r.bereich ~= "" and list.joined(r.art, r.bereich) or "", center = order }
    end,
})

record(1, {
    text("konto", 0, 8),
    date("datum", 8),
    level = 1,
    again = "head",
    rows = { { "sum", mostCurrencies }, "head" },
    emit = function(r)
        if group ~= nil and group.hasNoHead then finishGroup() end
        if grouping == 0 then
            begin(r.datum ~= "" and "Skonto bis " .. r.datum or "ohne Skontofrist")
        elseif grouping == 1 then
            begin(r.datum ~= "" and "Fällig am " .. r.datum or "ohne Fälligkeit")
        else
            begin("Konto " .. r.konto)
        end
    end,
    close = {
        rows = { { "sum", mostCurrencies } },
        emit = finishGroup,
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
    rows = { "head", "line" },
    emit = function(r)
        if group == nil then begin(grouping == 1 and "ohne Fälligkeit" or "ohne Skontofrist", true) end
        enter(group, r)
        enter(all, r)
        r.tage = overdue(r.termin)
        r.gruppe, r.gesetzt = group.title, r.gesetzt ~= 0
        data(r)
        row("line", r)
    end,
})

finish {
    rows = { { "sum", mostCurrencies }, { "total", mostCurrencies } },
    empty = "Keine offenen Posten.",
    emit = function()
        if group ~= nil and group.hasNoHead then finishGroup() end
        sumRows("total", all.count == 1 and "1 Posten" or "Gesamtsumme, " .. all.count .. " Posten", all)
    end,
}
