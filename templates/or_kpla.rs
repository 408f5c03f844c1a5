-- Kontenplan of Kreditoren and Debitoren: three rows an account with its master data.

report { id = "tervoKTOPLAN0.0", title = "Kontenplan" }

local list = share("or_page")

list.across()

style("erste", { like = "line", above = "hair", below = "none", bold = true })

columns {
    { "konto", "Konto\nKürzel\nAngelegt", 22 },
    { "name", "Name\nAnschrift\nOrt", 68 },
    { "bank", "Bank\nBankleitzahl\nKontonummer", 50 },
    { "zahlung", "Zahlungsziele (Tage)\nSkonto\nWährung", 34 },
    { "gegen", "Gegenkonto\nMahnkennziffer\nLöschbar", 28 },
    { "steuer", "USt-IdNr.\nKennzeichen\nBemerkung", 66 },
}

fields {
    { "konto", "Konto" },
    { "kuerzel", "Kürzel" },
    { "name1", "Name" },
    { "name2", "Name 2" },
    { "strasse", "Straße" },
    { "land", "Land" },
    { "plz", "PLZ" },
    { "ort", "Ort" },
    { "bank", "Bank" },
    { "blz", "Bankleitzahl" },
    { "bankkonto", "Kontonummer" },
    { "ziel1", "Zahlungsziel 1 (Tage)", form = "number" },
    { "ziel2", "Zahlungsziel 2 (Tage)", form = "number" },
    { "skonto", "Skonto %", form = "rate" },
    { "waehrung", "Währung" },
    { "gegenkonto", "Gegenkonto" },
    { "mahnziffer", "Mahnkennziffer", form = "number" },
    { "ustid", "USt-IdNr." },
    { "kennzeichen", "Kennzeichen", form = "flag" },
    { "bemerkung", "Bemerkung" },
    { "loeschbar", "Löschbar", form = "flag" },
    { "angelegt", "Angelegt" },
}

record(0, {
    text("mandant", 0, 41),
    text("art", 41, 30),
    text("bereich", 71, 30),
    emit = function(r)
        about { { "mandant", r.mandant }, { "konten", r.art } }
        list.head(r.mandant, "Kontenplan")
        head { left = r.art, center = r.bereich }
    end,
})

local function percent(hundredths)
    if hundredths == nil or hundredths == 0 then return "" end
    return money(hundredths) .. " %"
end

local function yes(flag) return flag and "ja" or "nein" end

record(1, {
    text("konto", 0, 8),
    text("kuerzel", 8, 9),
    u32("loeschmarke", 17),
    date("angelegt", 21),
    text("name1", 28, 26),
    text("name2", 54, 26),
    text("strasse", 80, 31),
    text("plz", 111, 7),
    text("land", 118, 4),
    text("ort", 122, 31),
    text("gegenkonto", 153, 8),
    text("blz", 161, 9),
    text("bankkonto", 170, 11),
    text("bank", 181, 28),
    i32("ziel1", 209),
    i32("ziel2", 213),
    rate("skonto", 217),
    i32("mahnziffer", 223),
    text("ustid", 227, 16),
    text("waehrung", 243, 5),
    u32("gesetzt", 248),
    text("bemerkung", 252, 28),
    rows = { "erste", { "text", 2 } },
    emit = function(r)
        r.loeschbar = r.loeschmarke == 1
        r.kennzeichen = r.gesetzt == 1
        data(r)
        local name = r.name1
        if r.name2 ~= "" then name = name .. ", " .. r.name2 end
        local ort = list.joined(r.plz, r.ort)
        if r.land ~= "" then ort = r.land .. "-" .. ort end
        row("erste", {
            konto = r.konto,
            name = name,
            bank = r.bank,
            zahlung = r.ziel1 .. " / " .. r.ziel2,
            gegen = r.gegenkonto,
            steuer = r.ustid,
        })
        row("text", {
            konto = r.kuerzel,
            name = r.strasse,
            bank = r.blz,
            zahlung = percent(r.skonto),
            gegen = tostring(r.mahnziffer),
            steuer = yes(r.kennzeichen),
        })
        row("text", {
            konto = r.angelegt,
            name = ort,
            bank = r.bankkonto,
            zahlung = r.waehrung,
            gegen = yes(r.loeschbar),
            steuer = r.bemerkung,
        })
    end,
})

finish { empty = "Keine Konten in diesem Bereich." }
