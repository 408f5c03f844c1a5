-- Hauptabschlussübersicht: one line an account with Vortrag, the year, the closing entries, the sums and the
-- balance they leave.

report { id = "tervoHABSCHLUSS0.0", title = "Hauptabschlußübersicht" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 8,
    foot = 1,
}

columns {
    { "konto", "Konto", 14 },
    { "name", "Bezeichnung", 50 },
    { "vortragSoll", "Soll", 21, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "vortragHaben", "Haben", 21, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "jahrSoll", "Soll", 21, form = "amount", group = "Jahresverkehrszahlen", sum = true, zero = "blank" },
    { "jahrHaben", "Haben", 21, form = "amount", group = "Jahresverkehrszahlen", sum = true, zero = "blank" },
    { "abschlussSoll", "Soll", 21, form = "amount", group = "Abschluß", sum = true, zero = "blank" },
    { "abschlussHaben", "Haben", 21, form = "amount", group = "Abschluß", sum = true, zero = "blank" },
    { "summeSoll", "Soll", 21, form = "amount", group = "Summe", sum = true, zero = "blank" },
    { "summeHaben", "Haben", 21, form = "amount", group = "Summe", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 21, form = "amount", group = "Saldo", sum = true, zero = "blank" },
    { "saldoHaben", "Haben", 21, form = "amount", group = "Saldo", sum = true, zero = "blank" },
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
        local saldo = r.summeSoll - r.summeHaben
        if saldo >= 0 then r.saldoSoll = saldo else r.saldoHaben = -saldo end
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.name = "Gesamtsumme"
        row("total", sum)
    end,
}
