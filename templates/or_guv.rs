-- Gewinn- und Verlustrechnung: the tree of groups with the accounts in them, and the result.

report { id = "tervoGUV0.0", title = "Gewinn- und Verlustrechnung" }

local tree = share("or_tree")

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
        tree.choice = r
        local compared = r.vergleich ~= 0 and "Vergleich: " .. r.zeitraumVergleich or ""
        head { left = "Gewinn- und Verlustrechnung", right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { right = compared }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

tree.groups(1)

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
            if tree.choice ~= nil and (tree.choice.mitKonten == 0 or tree.choice.ebene < math.min(kind - 4, 3)) then
                add(tree.amounts(r))
                return
            end
            if tree.choice ~= nil and tree.choice.kontenstruktur ~= 0 then r.konto = r.nummer .. "   " .. r.kuerzel end
            row("line", tree.amounts(r))
        end,
    })
end

finish {
    rows = { "total" },
    emit = function(sum)
        local title = sum.betrag < 0 and "Verlust" or "Gewinn"
        row("total", tree.amounts { konto = title, betrag = sum.betrag, vergleich = sum.vergleich })
    end,
}
