-- Gewinn- und Verlustrechnung: the tree of groups with the accounts in them, and the result.

report { id = "tervoGUV0.0", title = "Gewinn- und Verlustrechnung" }

page {
    margins = { top = 12, right = 10, bottom = 12, left = 20 },
    font = "Roboto",
    fontsize = 9,
    head = 3,
    foot = 1,
}

columns {
    { "konto", "", 30 },
    { "text", "", 84 },
    { "betrag", "Betrag", 33, form = "amount", sum = true },
    { "vergleich", "Vergleich", 33, form = "amount", sum = true, zero = "blank" },
}

style("ebene1", { like = "text", bold = true, height = 7 })
style("ebene2", { like = "text", bold = true, height = 5.5 })
style("ebene3", { like = "text", height = 5 })
style("line", { below = "none" })
style("summe", { like = "sum" })

local choice = nil
local open = {} -- by depth: title of the group, and whether its sum stands under it

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("zeitraumVergleich", 91, 50),
    u32("vergleich", 141),
    u32("kontenstruktur", 145),
    u32("ersteEbeneUnter", 149),
    i32("ebene", 153),
    u32("mitKonten", 157),
    emit = function(r)
        choice = r
        local compared = r.vergleich ~= 0 and "Vergleich: " .. r.zeitraumVergleich or ""
        head { left = "Gewinn- und Verlustrechnung", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { right = compared }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local function amounts(cells)
    if choice == nil or choice.vergleich == 0 then cells.vergleich = nil end
    return cells
end

-- A group shows its sum in its own line, or under what it holds: where the tree asks for it, and for the first
-- level where the user wants it under the second.
for depth = 1, 3 do
    record(depth, {
        u32("summenzeile", 0),
        text("titel", 4, 28),
        level = depth,
        rows = { "ebene" .. depth },
        emit = function(r)
            local shown = choice == nil or depth <= choice.ebene
            local below = r.summenzeile ~= 0 or (depth == 1 and choice ~= nil and choice.ersteEbeneUnter ~= 0)
            open[depth] = { titel = r.titel, below = shown and below }
            if not shown then return end
            bookmark(r.titel)
            local cells = { konto = r.titel }
            if not below then
                cells.betrag = groupsum
                cells.vergleich = groupsum
            end
            row("ebene" .. depth, amounts(cells))
        end,
        close = {
            rows = { "summe" },
            emit = function(sum)
                if not open[depth].below then return end
                row("summe", amounts {
                    konto = "Summe " .. open[depth].titel,
                    betrag = sum.betrag,
                    vergleich = sum.vergleich,
                })
            end,
        },
    })
end

-- Earnings are positive: Haben minus Soll.
for kind = 4, 8 do
    record(kind, {
        text("nummer", 0, 8),
        text("kuerzel", 8, 9),
        text("text", 17, 41),
        amount("soll", 58),
        amount("haben", 71),
        amount("vergleichSoll", 84),
        amount("vergleichHaben", 97),
        rows = { "line" },
        emit = function(r)
            r.betrag = r.haben - r.soll
            r.vergleich = r.vergleichHaben - r.vergleichSoll
            if choice ~= nil and (choice.mitKonten == 0 or choice.ebene < math.min(kind - 4, 3)) then
                add(amounts(r))
                return
            end
            if choice ~= nil and choice.kontenstruktur ~= 0 then r.konto = r.nummer .. "   " .. r.kuerzel end
            row("line", amounts(r))
        end,
    })
end

finish {
    rows = { "total" },
    emit = function(sum)
        local title = sum.betrag < 0 and "Verlust" or "Gewinn"
        row("total", amounts { konto = title, betrag = sum.betrag, vergleich = sum.vergleich })
    end,
}
