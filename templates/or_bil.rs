-- Bilanz and Eröffnungsbilanz: the two sides, each with its tree of groups and the accounts in them.

report { id = "tervoBILANZ0.0", title = "Bilanz" }

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

style("seite", { like = "head", size = 12, height = 9 })
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
    u32("eroeffnung", 141),
    u32("vergleich", 145),
    u32("ersteEbeneUnter", 149),
    u32("kontenstruktur", 153),
    i32("ebene", 157),
    u32("mitKonten", 161),
    emit = function(r)
        choice = r
        local title = r.eroeffnung ~= 0 and "Eröffnungsbilanz" or "Bilanz"
        local compared = r.vergleich ~= 0 and "Vergleich: " .. r.zeitraumVergleich or ""
        head { left = title, right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { right = compared }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local function amounts(cells)
    if choice == nil or choice.vergleich == 0 then cells.vergleich = nil end
    return cells
end

local side = ""

record(8, {
    u32("aktiva", 0),
    level = 1,
    newpage = true,
    rows = { "seite" },
    emit = function(r)
        side = r.aktiva ~= 0 and "Aktiva" or "Passiva"
        bookmark(side)
        row("seite", side)
    end,
    close = {
        rows = { "total" },
        emit = function(sum)
            row("total", amounts { konto = "Summe " .. side, betrag = sum.betrag, vergleich = sum.vergleich })
        end,
    },
})

-- A group shows its sum in its own line, or under what it holds: where the tree asks for it, and for the first
-- level where the user wants it under the second.
for depth = 1, 3 do
    record(depth, {
        u32("summenzeile", 0),
        text("titel", 4, 28),
        level = depth + 1,
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

for kind = 4, 7 do
    record(kind, {
        text("nummer", 0, 8),
        text("kuerzel", 8, 9),
        text("text", 17, 41),
        amount("betrag", 58),
        amount("vergleich", 71),
        rows = { "line" },
        emit = function(r)
            if choice ~= nil and (choice.mitKonten == 0 or choice.ebene < math.min(kind - 4, 3)) then
                add(amounts(r))
                return
            end
            if choice ~= nil and choice.kontenstruktur ~= 0 then r.konto = r.nummer .. "   " .. r.kuerzel end
            row("line", amounts(r))
        end,
    })
end
