-- Hauptabschlussübersicht: one line an account with what was carried forward, the turnover of the year, their
-- sums and balance, the closing entries, and the balance that they leave.

report { id = "tervoHABSCHLUSS0.0", title = "Hauptabschlußübersicht" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 7.5,
    foot = 1,
}

columns {
    { "konto", "Konto", 12 },
    { "name", "Bezeichnung", 34 },
    { "vortragSoll", "Soll", 19, form = "amount", group = "Eröffnungsbilanz", sum = true, zero = "blank" },
    { "vortragHaben", "Haben", 19, form = "amount", group = "Eröffnungsbilanz", sum = true, zero = "blank" },
    { "jahrSoll", "Soll", 19, form = "amount", group = "Umsätze des Jahres", sum = true, zero = "blank" },
    { "jahrHaben", "Haben", 19, form = "amount", group = "Umsätze des Jahres", sum = true, zero = "blank" },
    { "standSoll", "Soll", 19, form = "amount", group = "Summenbilanz", sum = true, zero = "blank" },
    { "standHaben", "Haben", 19, form = "amount", group = "Summenbilanz", sum = true, zero = "blank" },
    { "bestandSoll", "Soll", 19, form = "amount", group = "Saldenbilanz", sum = true, zero = "blank" },
    { "bestandHaben", "Haben", 19, form = "amount", group = "Saldenbilanz", sum = true, zero = "blank" },
    { "abschlussSoll", "Soll", 19, form = "amount", group = "Abschlußbuchungen", sum = true, zero = "blank" },
    { "abschlussHaben", "Haben", 19, form = "amount", group = "Abschlußbuchungen", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 19, form = "amount", group = "Saldo nach Abschluß", sum = true, zero = "blank" },
    { "saldoHaben", "Haben", 19, form = "amount", group = "Saldo nach Abschluß", sum = true, zero = "blank" },
}

carry { column = "name", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

record(0, {
    text("mandant", 0, 41),
    u32("jahr", 41),
    date("von", 45),
    date("bis", 52),
    text("auswahl", 59, 50),
    emit = function(r)
        head { left = r.mandant, center = "Hauptabschlußübersicht " .. r.jahr, right = "Seite {page} von {pages}" }
        head { left = r.auswahl, center = "vom " .. r.von .. " bis zum " .. r.bis }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local function balance(r, name, amount)
    if amount >= 0 then r[name .. "Soll"] = amount else r[name .. "Haben"] = -amount end
end

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 26),
    amount("vortragSoll", 43),
    amount("vortragHaben", 56),
    amount("jahrSoll", 69),
    amount("jahrHaben", 82),
    amount("abschlussSoll", 95),
    amount("abschlussHaben", 108),
    amount("summeSoll", 121),
    amount("summeHaben", 134),
    u32("bewegt", 147),
    rows = { "line" },
    emit = function(r)
        if r.bewegt == 0 then return end
        r.standSoll, r.standHaben = r.vortragSoll + r.jahrSoll, r.vortragHaben + r.jahrHaben
        balance(r, "bestand", r.standSoll - r.standHaben)
        balance(r, "saldo", r.summeSoll - r.summeHaben)
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.name = sum.count > 0 and "Gesamtsumme" or "Keine bebuchten Konten"
        row("total", sum)
    end,
}
