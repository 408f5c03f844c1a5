-- Kostenaufteilung: on which Sachkonten the costs of each Kostenstelle arose, apart for lines with and without
-- the mark of the Kostenschablone. There is no sum of all Kostenstellen: a line with two of them stands in both.

report { id = "tervoKAUFT0.0", title = "Kostenaufteilung" }

local list = share("or_page")

list.across()

style("note", { like = "text", italic = true })

columns {
    { "konto", "Konto", 18 },
    { "name", "Bezeichnung", 76 },
    { "mitSoll", "Soll", 30, form = "amount", group = "Mit Kennzeichen", sum = true, zero = "blank" },
    { "mitHaben", "Haben", 30, form = "amount", group = "Mit Kennzeichen", sum = true, zero = "blank" },
    { "ohneSoll", "Soll", 30, form = "amount", group = "Ohne Kennzeichen", sum = true, zero = "blank" },
    { "ohneHaben", "Haben", 30, form = "amount", group = "Ohne Kennzeichen", sum = true, zero = "blank" },
    { "saldoSoll", "Soll", 30, form = "amount", group = "Saldo", zero = "blank" },
    { "saldoHaben", "Haben", 30, form = "amount", group = "Saldo", zero = "blank" },
}

fields {
    { "kostenstelle", "Kostenstelle" },
    { "stellenname", "Name der Kostenstelle" },
    { "konto", "Konto" },
    { "name", "Bezeichnung" },
    { "mitSoll", "Mit Kennzeichen Soll", form = "amount" },
    { "mitHaben", "Mit Kennzeichen Haben", form = "amount" },
    { "ohneSoll", "Ohne Kennzeichen Soll", form = "amount" },
    { "ohneHaben", "Ohne Kennzeichen Haben", form = "amount" },
    { "saldo", "Saldo", form = "amount" },
}

carry { level = 1, column = "name", down = "Übertrag", up = "Übertrag von Seite {before}" }

local function bereichOf(r)
    if r.bereich == "" then return "alle Kostenstellen" end
    local isRange = r.bereich:find("von ") or r.bereich:find("bis ")
    return (isRange and "Kostenstellen " or "Kostenstelle ") .. r.bereich
end

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    text("bereich", 91, 30),
    emit = function(r)
        about { { "mandant", r.mandant }, { "zeitraum", r.zeitraum } }
        list.head(r.mandant, "Kostenaufteilung")
        head { left = bereichOf(r), center = r.zeitraum }
    end,
})

local nummer = ""
local stellenname = ""
local stellen = 0

record(1, {
    text("nummer", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 31),
    level = 1,
    rows = { "head" },
    again = "head",
    emit = function(r)
        nummer = r.nummer
        stellenname = r.name
        stellen = stellen + 1
        bookmark(list.joined(r.nummer, r.name))
        row("head", "Kostenstelle " .. r.nummer .. "   " .. r.kuerzel .. "   " .. r.name)
    end,
    close = {
        rows = { "sum" },
        emit = function(sum)
            if sum.count == 0 then return row("sum", { name = "keine Kosten im Zeitraum" }) end
            local saldo = sum.mitSoll - sum.mitHaben + sum.ohneSoll - sum.ohneHaben
            sum.name = "Summe Kostenstelle " .. nummer
            sum.saldoSoll = saldo >= 0 and saldo or nil
            sum.saldoHaben = saldo < 0 and -saldo or nil
            row("sum", sum)
        end,
    },
})

record(2, {
    text("konto", 0, 8),
    text("name", 8, 41),
    amount("mitSoll", 49),
    amount("mitHaben", 62),
    amount("ohneSoll", 75),
    amount("ohneHaben", 88),
    rows = { "line" },
    emit = function(r)
        r.kostenstelle = nummer
        r.stellenname = stellenname
        r.saldo = r.mitSoll - r.mitHaben + r.ohneSoll - r.ohneHaben
        data(r)
        if r.saldo >= 0 then r.saldoSoll = r.saldo else r.saldoHaben = -r.saldo end
        row("line", r)
    end,
})

finish {
    rows = { "note" },
    empty = "Keine Kostenstelle in diesem Bereich.",
    emit = function()
        row("note", (stellen == 1 and "1 Kostenstelle. " or stellen .. " Kostenstellen. ")
            .. "Eine Kostenzeile mit zwei Kostenstellen zählt bei jeder von beiden; "
            .. "eine Summe über alle gibt es daher nicht.")
    end,
}
