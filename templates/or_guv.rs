-- Gewinn- und Verlustrechnung: the tree of groups with the accounts in them, and the result. Earnings are positive:
-- Haben less Soll.

report { id = "tervoGUV0.0", title = "Gewinn- und Verlustrechnung" }

local tree = share("or_tree")

tree.list.upright { font = "Roboto", fontsize = 8.5 }
tree.styles()

columns {
    { "text", "Bezeichnung", 90 },
    { "kuerzel", "Kürzel", 0 },
    { "soll", "Soll", 30, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 30, form = "amount", sum = true, zero = "blank" },
    { "betrag", "Ergebnis", 30, form = "amount", sum = true },
    { "vergleich", "", 0, form = "amount", sum = true },
    { "differenz", "Veränderung", 0, form = "amount", sum = true },
}

fields {
    { "gruppe1", "Gruppe 1" },
    { "gruppe2", "Gruppe 2" },
    { "gruppe3", "Gruppe 3" },
    { "nummer", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name", "Bezeichnung" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
    { "betrag", "Ergebnis", form = "amount" },
    { "vergleichSoll", "Vergleich Soll", form = "amount" },
    { "vergleichHaben", "Vergleich Haben", form = "amount" },
    { "vergleich", "Vergleich", form = "amount" },
    { "differenz", "Veränderung", form = "amount" },
}

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
        local isCompared = r.vergleich ~= 0
        if isCompared then
            tree.begin(r, { soll = 0, haben = 0, betrag = 27, vergleich = 27, differenz = 27 })
        else
            tree.begin(r, { soll = 30, haben = 30, betrag = 30 })
        end
        about {
            { "mandant", r.mandant },
            { "zeitraum", r.zeitraum },
            { "vergleich", isCompared and tree.heading(r.zeitraumVergleich) or "" },
        }
        tree.list.head(r.mandant, "Gewinn- und Verlustrechnung")
        head { center = r.zeitraum }
    end,
})

tree.groups(1, { "soll", "haben", "betrag", "vergleich", "differenz" })
tree.accounts(1, 8, function()
    return { amount("soll", 58), amount("haben", 71), amount("vergleichSoll", 84), amount("vergleichHaben", 97) }
end, function(r)
    r.betrag = r.haben - r.soll
    r.vergleich = r.vergleichHaben - r.vergleichSoll
end)

finish {
    rows = { "total" },
    emit = function(sum)
        sum.text = tree.result(sum.betrag, tree.choice.vergleich ~= 0 and sum.vergleich or 0)
        row("total", sum)
    end,
    empty = "Keine Konten in der Gewinn- und Verlustrechnung.",
}
