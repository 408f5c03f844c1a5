-- Umsatzsteuerverprobung: the accounts of each Kennzahl of the return, then the tax accounts.

report { id = "tervoUSTVAVERPROB0.0", title = "Umsatzsteuerverprobung" }

local list = share("or_page")

list.upright()

style("abschnitt", { like = "head", size = 11, height = 8 })
style("note", { like = "text", italic = true })

columns {
    { "kennzahl", "Kennzahl", 18, align = "center" },
    { "konto", "Konto", 20 },
    { "kuerzel", "Kürzel", 26 },
    { "name", "Bezeichnung", 80 },
    { "betrag", "Soll − Haben", 36, form = "amount", sum = true },
}

fields {
    { "abschnitt", "Abschnitt" },
    { "kennzahl", "Kennzahl", form = "number" },
    { "gruppe", "Gruppe" },
    { "konto", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name", "Bezeichnung" },
    { "betrag", "Soll minus Haben", form = "amount" },
}

list.carryGroup(2, "name")

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 80),
    emit = function(r)
        about { { "mandant", r.mandant }, { "zeitraum", r.zeitraum } }
        list.head(r.mandant, "Umsatzsteuerverprobung")
        head { center = r.zeitraum }
    end,
})

local abschnitt = ""

record(1, {
    text("titel", 0, 50),
    i32("kennzahlen", 50),
    level = 1,
    rows = { "abschnitt" },
    emit = function(r)
        abschnitt = r.titel
        bookmark(r.titel)
        row("abschnitt", r.titel)
    end,
})

local gruppe = ""

-- The group of a Kennzahl has no text: its lines name it.
record(2, {
    text("titel", 0, 50),
    level = 2,
    rows = { "head" },
    again = "head",
    emit = function(r)
        gruppe = r.titel
        if r.titel ~= "" then
            bookmark(r.titel)
            row("head", r.titel)
        end
    end,
    close = {
        rows = { "sum" },
        emit = function(sum)
            if sum.count == 0 then return row("sum", { name = "keine Konten" }) end
            row("sum", { name = "Summe " .. gruppe, betrag = sum.betrag })
        end,
    },
})

record(3, {
    text("konto", 0, 8),
    text("kuerzel", 8, 10),
    text("name", 18, 41),
    i32("nummer", 59),
    amount("betrag", 63),
    rows = { "line" },
    emit = function(r)
        gruppe = "Kennzahl " .. r.nummer
        data {
            abschnitt = abschnitt,
            kennzahl = r.nummer,
            konto = r.konto,
            kuerzel = r.kuerzel,
            name = r.name,
            betrag = r.betrag,
        }
        r.kennzahl = tostring(r.nummer)
        row("line", r)
    end,
})

record(4, {
    text("konto", 0, 8),
    text("kuerzel", 8, 10),
    text("name", 18, 41),
    amount("betrag", 59),
    rows = { "line" },
    emit = function(r)
        r.abschnitt = abschnitt
        r.gruppe = gruppe
        data(r)
        row("line", r)
    end,
})

finish {
    rows = { "note" },
    emit = function()
        row("note", "Beträge sind Soll minus Haben. Die Voranmeldung rechnet umgekehrt, Haben minus Soll: "
            .. "was hier ein Minus hat, steht dort ohne.")
    end,
}
