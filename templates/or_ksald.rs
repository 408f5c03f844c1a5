-- Kostensaldenliste: what fell on each Kostenstelle in a period. There is no sum of all: a cost line with two
-- Kostenstellen stands in both.

report { id = "tervoKOSALIST0.0", title = "Kostensaldenliste" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    head = 3,
    foot = 1,
}

columns {
    { "nummer", "Nummer", 18 },
    { "kuerzel", "Kürzel", 22 },
    { "name", "Kostenstelle", 50 },
    { "text", "Bemerkung", 60 },
    { "summe", "Betrag", 30, form = "amount" },
}

style("note", { like = "text", italic = true })

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("bereich", 91, 30),
    emit = function(r)
        head { left = "Kostensaldenliste", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { left = r.bereich == "" and "alle Kostenstellen" or "Kostenstellen " .. r.bereich }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("nummer", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 31),
    text("text", 48, 41),
    amount("summe", 89),
    rows = { "line" },
})

local function counted(count)
    if count == 0 then return "Keine Kostenstelle in diesem Bereich" end
    return count == 1 and "1 Kostenstelle" or count .. " Kostenstellen"
end

finish {
    rows = { "sum", "note" },
    emit = function(sum)
        row("sum", { name = counted(sum.count) })
        row("note", "Beträge sind Soll weniger Haben. Eine Kostenzeile mit zwei Kostenstellen zählt bei jeder "
            .. "von beiden; eine Summe über alle gibt es daher nicht.")
    end,
}
