-- Bilanz and Eröffnungsbilanz: the two sides, each with its tree of groups and the accounts in them.

report { id = "tervoBILANZ0.0", title = "Bilanz" }

local tree = share("or_tree")

style("seite", { like = "head", size = 12, height = 9 })

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
        tree.choice = r
        local title = r.eroeffnung ~= 0 and "Eröffnungsbilanz" or "Bilanz"
        local compared = r.vergleich ~= 0 and "Vergleich: " .. r.zeitraumVergleich or ""
        head { left = title, right = "Seite {page} von {pages}" }
        head { left = r.mandant, right = r.zeitraum }
        head { right = compared }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

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
            row("total", tree.amounts { konto = "Summe " .. side, betrag = sum.betrag, vergleich = sum.vergleich })
        end,
    },
})

tree.groups(2)

for kind = 4, 7 do
    record(kind, {
        text("nummer", 0, 8),
        text("kuerzel", 8, 9),
        text("text", 17, 41),
        amount("betrag", 58),
        amount("vergleich", 71),
        rows = { "line" },
        emit = function(r)
            if tree.choice ~= nil and (tree.choice.mitKonten == 0 or tree.choice.ebene < math.min(kind - 4, 3)) then
                add(tree.amounts(r))
                return
            end
            if tree.choice ~= nil and tree.choice.kontenstruktur ~= 0 then r.konto = r.nummer .. "   " .. r.kuerzel end
            row("line", tree.amounts(r))
        end,
    })
end
