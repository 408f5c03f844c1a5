-- What Bilanz and Gewinn- und Verlustrechnung share: the looks of their trees and the groups in them.

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

local tree = {
    choice = nil, -- the header's record
}
local open = {} -- by depth: title of the group, and whether its sum stands under it

-- Without the second figure where nothing is compared.
function tree.amounts(cells)
    if tree.choice == nil or tree.choice.vergleich == 0 then cells.vergleich = nil end
    return cells
end

-- Declares the records of the three depths of groups, the first of which opens level `first`. A group shows its sum
-- in its own line, or under what it holds: where the tree asks for it, and for the first depth where the user wants
-- it under the second.
function tree.groups(first)
    for depth = 1, 3 do
        record(depth, {
            u32("summenzeile", 0),
            text("titel", 4, 28),
            level = first + depth - 1,
            rows = { "ebene" .. depth },
            emit = function(r)
                local shown = tree.choice == nil or depth <= tree.choice.ebene
                local below = r.summenzeile ~= 0 or (depth == 1 and tree.choice ~= nil and tree.choice.ersteEbeneUnter ~= 0)
                open[depth] = { titel = r.titel, below = shown and below }
                if not shown then return end
                bookmark(r.titel)
                local cells = { konto = r.titel }
                if not below then
                    cells.betrag = groupsum
                    cells.vergleich = groupsum
                end
                row("ebene" .. depth, tree.amounts(cells))
            end,
            close = {
                rows = { "summe" },
                emit = function(sum)
                    if not open[depth].below then return end
                    row("summe", tree.amounts {
                        konto = "Summe " .. open[depth].titel,
                        betrag = sum.betrag,
                        vergleich = sum.vergleich,
                    })
                end,
            },
        })
    end
end

return tree
