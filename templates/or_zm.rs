-- Zusammenfassende Meldung: the turnover of each Debitor with a number of another country.

report { id = "tervoZM0.0", title = "Zusammenfassende Meldung" }

local list = share("or_page")

list.upright()

style("note", { like = "text", italic = true })

columns {
    { "konto", "Konto", 16 },
    { "kuerzel", "Kürzel", 22 },
    { "name", "Name", 50 },
    { "land", "Land", 10 },
    { "nummer", "USt-IdNr.", 36 },
    { "umsatz", "Bemessungs-\ngrundlage", 32, form = "amount", sum = true },
    { "kennzeichen", "Kenn-\nzeichen", 14, align = "center" },
}

fields {
    { "konto", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name", "Name" },
    { "ustid", "USt-IdNr." },
    { "umsatz", "Bemessungsgrundlage", form = "amount" },
    { "kennzeichen", "Kennzeichen", form = "flag" },
}

list.carry("name")

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    emit = function(r)
        about { { "mandant", r.mandant }, { "zeitraum", r.zeitraum } }
        list.head(r.mandant, "Zusammenfassende Meldung")
        head { center = r.zeitraum }
    end,
})

-- The number comes with the blanks of the record.
local function trimmed(number)
    while number:sub(1, 1) == " " do number = number:sub(2) end
    return number
end

local meldungen = 0

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    text("name", 17, 26),
    text("ustid", 43, 16),
    amount("umsatz", 59),
    i32("gesetzt", 72),
    rows = { "line" },
    emit = function(r)
        r.konto = trimmed(r.konto)
        r.kennzeichen = r.gesetzt ~= 0
        data(r)
        r.land = r.ustid:sub(1, 2)
        r.nummer = r.ustid:sub(3)
        r.kennzeichen = r.gesetzt ~= 0 and "1" or nil
        if r.umsatz ~= 0 then meldungen = meldungen + 1 end
        row("line", r)
    end,
})

local function counted()
    return meldungen == 1 and "1 Meldung" or meldungen .. " Meldungen"
end

finish {
    rows = { "total", "note" },
    empty = "Keine Abnehmer mit einer USt-IdNr. eines anderen Landes.",
    emit = function(sum)
        row("total", { name = "Summe, " .. counted(), umsatz = sum.umsatz })
        row("note", "Abnehmer ohne Umsatz zählen nicht als Meldung. Gutschriften mindern die Beträge nicht.")
    end,
}
