-- What Bilanz and Gewinn- und Verlustrechnung share: the groups of their trees, the accounts in them, and the
-- columns of a comparison.

local tree = {
    list = share("or_page"),
    choice = nil, -- the header's record
    width = 180, -- millimetres for the columns
    kuerzel = 31, -- of them for the Kürzel
    step = 4, -- that each depth is indented by
    betrag = "betrag", -- the column in which the amounts of accounts stand
}

local open = {} -- by depth: the group's title, and where its sum stands
local path = {} -- by depth: titles of the groups around what comes next
local ungrouped = false -- accounts of no group are coming

function tree.styles()
    for depth = 1, 3 do
        style("gruppe" .. depth, { like = "head", bold = depth < 3, height = 6.5 - depth / 2, shade = 0,
            above = "none", below = "none", indent = tree.step * (depth - 1) })
        style("summe" .. depth, { like = "sum", bold = depth < 3, indent = tree.step * (depth - 1) })
    end
    for depth = 0, 4 do
        style("konto" .. depth, {
            like = "line", above = "none", below = "none", counts = false, indent = tree.step * depth,
        })
    end
    style("ohne", { like = "gruppe1" })
end

-- Keeps the header's record and makes the columns what it asks for: `widths` of the columns of amounts, the Kürzel of
-- accounts where it is wanted, indented like all texts of a row, and the name takes the rest.
function tree.begin(r, widths)
    tree.choice = r
    if r.kontenstruktur ~= 0 then widths.kuerzel = tree.kuerzel end
    column("text", { width = 1 })
    local rest = tree.width
    for name, width in pairs(widths) do
        column(name, { width = width })
        rest = rest - width
    end
    column("text", { width = rest })
    if r.vergleich ~= 0 then
        column("betrag", { title = r.zeitraum })
        column("vergleich", { title = tree.heading(r.zeitraumVergleich) })
    end
end

-- A period over a column. What is compared to a day begins with its year, whatever the first day says.
function tree.heading(zeitraum)
    local at = zeitraum:find("bis zum ")
    return at and "per " .. zeitraum:sub(at + 8) or zeitraum
end

-- Another tree begins.
function tree.reset()
    open, path, ungrouped = {}, {}, false
end

-- Whether accounts at a depth are listed: an account is a level of its own, and the third holds all that is deeper.
local function listed(depth)
    local choice = tree.choice
    return choice.mitKonten ~= 0 and (choice.ebene >= 3 or depth < choice.ebene)
end

local function sums(sum, cells)
    for _, name in ipairs(tree.amounts) do cells[name] = sum[name] end
    return cells
end

-- The heading of a group that waited for something to stand in it.
local function showHeading(depth)
    local group = open[depth]
    if group == nil or not group.waits then return end
    group.waits = false
    row("gruppe" .. depth, { text = group.titel })
end

-- The columns with sums, and the declaration of the three depths of groups, the first of which opens level `first`.
-- A group shows its sum in its own line, or under what it holds: where the tree asks for it, and for the first depth
-- where the user wants it under the second. Without accounts it is not known whether it holds anything, so its
-- heading waits for a group inside it; where none comes, title and sum make one line.
function tree.groups(first, amounts)
    tree.amounts = amounts
    for depth = 1, 3 do
        local headings = {}
        for outer = 1, depth do headings[outer] = "gruppe" .. outer end
        record(depth, {
            u32("summenzeile", 0),
            text("titel", 4, 28),
            level = first + depth - 1,
            again = "gruppe" .. depth,
            rows = headings,
            emit = function(r)
                local choice = tree.choice
                ungrouped = false
                for inner = depth, 3 do path[inner] = nil end
                path[depth] = r.titel
                local isShown = depth <= choice.ebene
                local mayHold = depth < choice.ebene or listed(depth)
                local isBelow = mayHold and (r.summenzeile ~= 0 or (depth == 1 and choice.ersteEbeneUnter ~= 0))
                local group = { titel = r.titel, isShown = isShown, isBelow = isBelow }
                open[depth] = group
                if not isShown then return end
                for outer = 1, depth - 1 do showHeading(outer) end
                bookmark(r.titel)
                group.waits = isBelow
                if isBelow then
                    if listed(depth) then showHeading(depth) end
                    return
                end
                local cells = { text = r.titel }
                for _, name in ipairs(tree.amounts) do cells[name] = groupsum end
                row("gruppe" .. depth, cells)
            end,
            close = {
                rows = { "summe" .. depth, "gruppe" .. depth },
                emit = function(sum)
                    local group = open[depth]
                    if not group.isShown or not group.isBelow then return end
                    if group.waits then
                        row("gruppe" .. depth, sums(sum, { text = group.titel }))
                    else
                        row("summe" .. depth, sums(sum, { text = "Summe " .. group.titel }))
                    end
                end,
            },
        })
    end
end

-- Declares the kinds of accounts from 4 to `last`; `fields` are theirs, and `amountsOf` puts what enters the sums
-- into the record. `about` are entries for the rows of data.
function tree.accounts(first, last, fields, amountsOf)
    for kind = 4, last do
        local depth = kind - 4
        local entries = {
            text("nummer", 0, 8),
            text("kuerzel", 8, 9),
            text("name", 17, 41),
            closes = first + depth,
            rows = depth == 0 and { "ohne", "konto0" } or { "konto" .. depth },
            emit = function(r)
                amountsOf(r)
                for inner = depth + 1, 3 do path[inner] = nil end
                r.differenz = r.betrag - r.vergleich
                add(r)
                r.nummer = tree.number(r.nummer)
                r.gruppe1, r.gruppe2, r.gruppe3 = path[1], path[2], path[3]
                tree.data(r)
                if not listed(depth) then return end
                if depth == 0 and not ungrouped then row("ohne", { text = "ohne Zuordnung" }) end
                ungrouped = depth == 0
                r.text = tree.choice.kontenstruktur ~= 0 and r.nummer .. "   " .. r.name or r.name
                if tree.betrag ~= "betrag" then r[tree.betrag], r.betrag = r.betrag, nil end
                row("konto" .. depth, r)
            end,
        }
        for _, field in ipairs(fields()) do table.insert(entries, field) end
        record(kind, entries)
    end
end

-- A row of data of an account; what nothing is compared with is empty.
function tree.data(r)
    local cells = {}
    for name, value in pairs(r) do cells[name] = value end
    if tree.choice.vergleich == 0 then
        cells.vergleich, cells.differenz, cells.vergleichSoll, cells.vergleichHaben = nil, nil, nil, nil
    end
    data(cells)
end

-- A number without the blanks in front of it.
function tree.number(text)
    while text:sub(1, 1) == " " do text = text:sub(2) end
    return text
end

-- The result by its name; that of the comparison decides where the other is nothing.
function tree.result(betrag, vergleich)
    if betrag >= 0 and vergleich >= 0 then return "Jahresüberschuß" end
    if betrag <= 0 and vergleich <= 0 then return "Jahresfehlbetrag" end
    return "Jahresüberschuß/-fehlbetrag"
end

return tree
