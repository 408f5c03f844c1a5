-- Buchungsjournal: a line a posting, and those of a Splitbuchung together. Date and Beleg stand with the first. On each
-- line the amounts in Soll with the Vorsteuer are those in Haben with the Umsatzsteuer.

report { id = "tervoBJOURNAL0.0", title = "Buchungsjournal" }

local list = share("or_page")

list.across { fontsize = 7.5, margins = { top = 10, right = 8, bottom = 10, left = 12 } }

columns {
    { "nummer", "Nummer", 14, form = "number" },
    { "datum", "Datum", 16 },
    { "gebucht", "Gebucht", 16 },
    { "beleg", "Beleg", 17 },
    { "sollkonto", "Soll", 14, group = "Konto" },
    { "habenkonto", "Haben", 14, group = "Konto" },
    { "steuerkonto", "Steuer", 14, group = "Konto" },
    { "hauptkonto", "Split", 13, group = "Konto" },
    { "satz", "%", 10, form = "rate", zero = "blank" },
    { "text", "Buchungstext", 40 },
    { "benutzer", "Benutzer", 26 },
    { "soll", "Soll", 21, form = "amount", group = "Betrag", sum = true, zero = "blank" },
    { "haben", "Haben", 21, form = "amount", group = "Betrag", sum = true, zero = "blank" },
    { "ust", "USt", 20, form = "amount", sum = true, zero = "blank" },
    { "vst", "VSt", 20, form = "amount", sum = true, zero = "blank" },
}

fields {
    { "nummer", "Nummer", form = "number" },
    { "datum", "Datum" },
    { "gebucht", "Buchungsdatum" },
    { "beleg", "Beleg" },
    { "art", "Art" },
    { "hauptkonto", "Hauptkonto" },
    { "sollkonto", "Sollkonto" },
    { "habenkonto", "Habenkonto" },
    { "steuerkonto", "Steuerkonto" },
    { "satz", "Steuersatz", form = "rate" },
    { "text", "Buchungstext" },
    { "benutzer", "Benutzer" },
    { "soll", "Soll", form = "amount" },
    { "haben", "Haben", form = "amount" },
    { "nettoSoll", "Netto Soll", form = "amount" },
    { "nettoHaben", "Netto Haben", form = "amount" },
    { "ust", "USt", form = "amount" },
    { "vst", "VSt", form = "amount" },
}

list.carry("text")

record(0, {
    text("mandant", 0, 41),
    text("zeitraum", 41, 50),
    i32("benutzer", 91),
    emit = function(r)
        if r.benutzer == 0 then
            column("benutzer", { width = 0 })
            column("text", { width = 66 })
        end
        about { { "mandant", r.mandant }, { "zeitraum", r.zeitraum } }
        list.head(r.mandant, "Buchungsjournal")
        head { center = r.zeitraum }
    end,
})

local month = nil -- of the posting before

-- A posting prints nothing of its own: it opens the group of its lines, and lends them what they have in common.
record(1, {
    date("datum", 0),
    date("gebucht", 7),
    text("beleg", 14, 9),
    text("hauptkonto", 23, 8),
    i32("split", 31),
    words("art", 31, { [0] = "Buchung", "Split", "Split" }),
    text("benutzer", 35, 32),
    level = 1,
    keep = true,
    changes = { "datum" },
    emit = function(r)
        local ofDate = r.datum:sub(4)
        if ofDate ~= month then
            bookmark(ofDate)
            month = ofDate
        end
    end,
})

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
    amount("ust", 126),
    amount("vst", 139),
    rows = { "line" },
})

-- The folded lines of a posting, as one: what they have of tax is in the amounts. They stand behind the others of a
-- Splitbuchung; any other posting that is folded has no head.
record(3, {
    i32("nummer", 0),
    text("sollkonto", 4, 8),
    text("habenkonto", 12, 8),
    text("text", 20, 40),
    amount("soll", 60),
    amount("haben", 73),
    rows = { "line" },
    emit = function(r, posting)
        row("line", r)
        if posting == nil or posting.split == 0 or posting.isSummed then posting = {} end
        posting.isSummed = true
        r.art = "Summe"
        r.datum, r.gebucht, r.beleg = posting.datum, posting.gebucht, posting.beleg
        r.hauptkonto, r.benutzer = posting.hauptkonto, posting.benutzer
        data(r)
    end,
})

list.total("text", "Keine Buchungen im Zeitraum.")
