-- Buchungsjournal: a line a posting, and those of a Splitbuchung together. Date and Beleg stand with the first.

report { id = "tervoBJOURNAL0.0", title = "Buchungsjournal" }

page {
    landscape = true,
    margins = { top = 10, right = 8, bottom = 10, left = 15 },
    font = "Roboto Condensed",
    fontsize = 7.5,
    foot = 1,
}

columns {
    { "datum", "Datum", 15.5 },
    { "gebucht", "Gebucht", 15.5 },
    { "beleg", "Beleg", 15 },
    { "nummer", "Nummer", 12 },
    { "sollkonto", "Soll", 13, group = "Konto" },
    { "habenkonto", "Haben", 13, group = "Konto" },
    { "steuerkonto", "Steuer", 13, group = "Konto" },
    { "satz", "%", 9, form = "rate", zero = "blank" },
    { "text", "Buchungstext", 42 },
    { "benutzer", "Benutzer", 16 },
    { "soll", "Soll", 18.5, form = "amount", group = "Brutto", sum = true, zero = "blank" },
    { "haben", "Haben", 18.5, form = "amount", group = "Brutto", sum = true, zero = "blank" },
    { "nettoSoll", "Soll", 18.5, form = "amount", group = "Netto", sum = true, zero = "blank" },
    { "nettoHaben", "Haben", 18.5, form = "amount", group = "Netto", sum = true, zero = "blank" },
    { "steuerSoll", "Soll", 17.5, form = "amount", group = "Steuer", sum = true, zero = "blank" },
    { "steuerHaben", "Haben", 17.5, form = "amount", group = "Steuer", sum = true, zero = "blank" },
}

carry { column = "text", pagesum = "Summe Seite {page}", down = "Übertrag", up = "Übertrag von Seite {before}" }

local withUser = false

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    i32("benutzer", 91),
    emit = function(r)
        withUser = r.benutzer ~= 0
        head { left = r.mandant, center = "Buchungsjournal", right = "Seite {page} von {pages}" }
        head { center = r.zeitraum }
        foot { left = r.mandant, right = "gedruckt am " .. today() }
    end,
})

local posting = nil -- what the first line of the posting in hand still has to show
local month = nil

-- A posting prints nothing of its own: it opens the group of its lines.
record(1, {
    date("datum", 0),
    date("gebucht", 7),
    text("beleg", 14, 9),
    text("hauptkonto", 23, 8),
    i32("split", 31),
    text("benutzer", 35, 32),
    level = 1,
    keep = true,
    emit = function(r)
        posting = r
        local ofDate = r.datum:sub(4)
        if ofDate ~= month then
            bookmark(ofDate)
            month = ofDate
        end
    end,
})

local function begin(r)
    if posting == nil then return end
    r.datum = posting.datum
    r.gebucht = posting.gebucht
    r.beleg = posting.beleg
    if withUser then r.benutzer = posting.benutzer end
    posting = nil
end

record(2, {
    i32("nummer", 0),
    text("sollkonto", 4, 8),
    text("habenkonto", 12, 8),
    text("steuerkonto", 20, 8),
    rate("satz", 28),
    text("text", 34, 40),
    amount("soll", 74),
    amount("haben", 87),
    amount("nettoSoll", 100),
    amount("nettoHaben", 113),
    amount("steuerSoll", 126),
    amount("steuerHaben", 139),
    rows = { "line" },
    emit = function(r)
        begin(r)
        r.nummer = tostring(r.nummer)
        row("line", r)
    end,
})

-- The folded lines of a posting, as one.
record(3, {
    i32("nummer", 0),
    text("sollkonto", 4, 8),
    text("habenkonto", 12, 8),
    text("text", 20, 40),
    amount("soll", 60),
    amount("haben", 73),
    rows = { "line" },
    emit = function(r)
        begin(r)
        r.nummer = tostring(r.nummer)
        r.nettoSoll = r.soll
        r.nettoHaben = r.haben
        row("line", r)
    end,
})

finish {
    rows = { "total" },
    emit = function(sum)
        sum.text = "Gesamtsumme"
        row("total", sum)
    end,
}
