-- Bilanz and Eröffnungsbilanz: the two sides, each with its tree of groups and the accounts in them. The result
-- stands among the Passiva, so that the sides agree.

report { id = "tervoBILANZ0.0", title = "Bilanz" }

local tree = share("or_tree")

-- In account form: the Aktiva in the left half of the page, the Passiva in the right one.
tree.list.across { gap = 7 }
tree.width = 133
tree.kuerzel = 17
tree.step = 3
tree.styles()
style("seite", { like = "head", size = 12, height = 9, shade = 0 })
style("ergebnis", { like = "text", bold = true, height = 6 })

columns {
    { "text", "Bezeichnung", 75 },
    { "kuerzel", "Kürzel", 0, align = "right" }, -- without the text's indent
    { "vorspalte", "", 28, form = "amount" },
    { "betrag", "Betrag", 28, form = "amount", sum = true },
    { "vergleich", "", 0, form = "amount", sum = true },
    { "differenz", "Veränderung", 0, form = "amount", sum = true },
}

fields {
    { "seite", "Seite" },
    { "gruppe1", "Gruppe 1" },
    { "gruppe2", "Gruppe 2" },
    { "gruppe3", "Gruppe 3" },
    { "nummer", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name", "Bezeichnung" },
    { "betrag", "Betrag", form = "amount" },
    { "vergleich", "Vergleich", form = "amount" },
    { "differenz", "Veränderung", form = "amount" },
}

local side = nil      -- "Aktiva", "Passiva"
local aktiva = nil    -- their sums
local opening = false -- an Eröffnungsbilanz has no result

-- The day of the Bilanz, as far as it is told: a fiscal year with two numbers begins in an unknown month.
local function dayOf(zeitraum)
    if zeitraum:find("/") then
        return "zu" .. (opening and " Beginn" or "m Ende") .. " des Geschäftsjahres " .. zeitraum
    end
    if zeitraum:len() == 4 then return "zum " .. (opening and "01.01." or "31.12.") .. zeitraum end
    if zeitraum:find("per ") == 1 then return "zum " .. zeitraum:sub(5) end
    return "zum Ende " .. zeitraum
end

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("zeitraumVergleich", 91, 50),
    i32("eroeffnung", 141),
    u32("vergleich", 145),
    u32("ersteEbeneUnter", 149),
    u32("kontenstruktur", 153),
    i32("ebene", 157),
    u32("mitKonten", 161),
    emit = function(r)
        opening = r.eroeffnung ~= 0
        local period = dayOf(r.zeitraum)
        if r.vergleich ~= 0 then
            tree.begin(r, { vorspalte = 0, betrag = 21, vergleich = 21, differenz = 21 })
        else
            tree.betrag = "vorspalte" -- amounts of accounts stand before the sums of their groups
            tree.begin(r, { vorspalte = r.mitKonten ~= 0 and 28 or 0, betrag = 28 })
        end
        about {
            { "mandant", r.mandant },
            { "bericht", opening and "Eröffnungsbilanz" or "Bilanz" },
            { "zeitraum", period },
            { "vergleich", r.vergleich ~= 0 and tree.heading(r.zeitraumVergleich) or "" },
        }
        tree.list.head(r.mandant, opening and "Eröffnungsbilanz" or "Bilanz")
        head { center = period }
    end,
})

local function sideRow(style, title, betrag, vergleich)
    row(style, { text = title, betrag = betrag, vergleich = vergleich, differenz = betrag - vergleich })
end

record(8, {
    u32("aktiva", 0),
    level = 1,
    beside = true,
    again = "seite",
    rows = { "seite" },
    emit = function(r)
        side = r.aktiva ~= 0 and "Aktiva" or "Passiva"
        tree.reset()
        bookmark(side)
        row("seite", { text = side })
    end,
    close = {
        rows = { "ergebnis", "total" },
        emit = function(sum)
            local betrag, vergleich = sum.betrag, sum.vergleich
            if side == "Aktiva" then
                aktiva = { betrag = betrag, vergleich = vergleich }
            elseif aktiva.betrag ~= betrag or aktiva.vergleich ~= vergleich then
                local result = { betrag = aktiva.betrag - betrag, vergleich = aktiva.vergleich - vergleich }
                local title = opening and "Differenz" or tree.result(result.betrag, result.vergleich)
                sideRow("ergebnis", title, result.betrag, result.vergleich)
                tree.data { seite = side, name = title, betrag = result.betrag, vergleich = result.vergleich,
                    differenz = result.betrag - result.vergleich }
                betrag, vergleich = aktiva.betrag, aktiva.vergleich
            end
            sideRow("total", "Summe " .. side, betrag, vergleich)
        end,
    },
})

tree.groups(2, { "betrag", "vergleich", "differenz" })
tree.accounts(2, 7, function() return { amount("betrag", 58), amount("vergleich", 71) } end, function(r)
    r.seite = side
end)
