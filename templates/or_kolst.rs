-- Kostenstellenliste: the master data of the Kostenstellen.

report { id = "tervoKOSTLIST0.0", title = "Kostenstellenliste" }

page {
    margins = { top = 10, right = 10, bottom = 10, left = 20 },
    font = "Roboto Condensed",
    fontsize = 8.5,
    foot = 1,
}

columns {
    { "nummer", "Nummer", 20 },
    { "kuerzel", "Kürzel", 24 },
    { "name", "Kostenstelle", 54 },
    { "text", "Bemerkung", 60 },
    { "kennzeichen", "Kennzeichen", 22, align = "center" },
}

record(0, {
    text("mandant", 0, 41),
    text("bereich", 41, 30),
    emit = function(r)
        head { left = "Kostenstellenliste", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.bereich == "" and "alle Kostenstellen" or "Kostenstellen " .. r.bereich }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

record(1, {
    text("nummer", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 31),
    text("text", 48, 41),
    words("kennzeichen", 89, { [1] = "ja" }),
    rows = { "line" },
})

local function counted(count)
    if count == 0 then return "Keine Kostenstelle in diesem Bereich" end
    return count == 1 and "1 Kostenstelle" or count .. " Kostenstellen"
end

finish {
    rows = { "sum" },
    emit = function(sum) row("sum", { name = counted(sum.count) }) end,
}
