-- What lists share: the page upright and across, its head and foot, what is carried forward, the grand total.

local list = {}

-- The page across, for lists of many columns; `changes` are entries of page that differ.
function list.across(changes)
    local entries = {
        landscape = true,
        margins = { top = 10, right = 8, bottom = 10, left = 15 },
        font = "Roboto Condensed",
        fontsize = 8,
        foot = 1,
    }
    for name, value in pairs(changes or {}) do entries[name] = value end
    page(entries)
end

-- The page upright.
function list.upright(changes)
    local entries = {
        margins = { top = 10, right = 10, bottom = 10, left = 20 },
        font = "Roboto Condensed",
        fontsize = 8.5,
        foot = 1,
    }
    for name, value in pairs(changes or {}) do entries[name] = value end
    page(entries)
end

-- Sums of each page and those carried forward, with their texts in `column`.
function list.carry(column)
    carry { column = column, pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }
end

-- Sums of a group of `level` that goes on.
function list.carryGroup(level, column)
    carry { level = level, column = column, down = "Übertrag", up = "Übertrag von Seite {before}" }
end

-- The head's first line: Mandant, title, number of the page; and the foot.
function list.head(mandant, title)
    head { left = mandant, center = title, right = "Seite {page} von {pages}" }
    foot { left = mandant, right = "gedruckt am " .. today() }
end

-- Accounts and their range, or what else makes a text of two: one may be empty.
function list.joined(first, second)
    if first == "" or second == "" then return first .. second end
    return first .. " " .. second
end

-- The grand total, its title in `column`; `empty` is what a list without lines says.
function list.total(column, empty)
    finish {
        rows = { "total" },
        empty = empty,
        emit = function(sum)
            sum[column] = "Gesamtsumme"
            row("total", sum)
        end,
    }
end

-- A mark for what is set.
function list.mark(value) return value ~= 0 and "×" or nil end

return list
