-- The form of the Umsatzsteuervoranmeldung, which its variants share: the boxes in its order. `basis` is the title
-- of the column of bases; with `kodierzeile` the line for the tax office's machine stands under the address.
return function(variant)
    page {
        margins = { top = 12, right = 10, bottom = 10, left = 20 },
        font = "Roboto Condensed",
        fontsize = 8.5,
        head = 2,
        foot = 1,
    }

    style("title", { size = 13, height = 7 })
    style("subtitle", { size = 10 })
    style("anschrift", { like = "text", height = 3.6 })
    style("abschnitt", { like = "head", height = 5, below = "hair" })
    style("line", { height = 3.9, counts = false })

    columns {
        { "kz", "Kennzahl", 20, align = "center" },
        { "text", "", 96 },
        { "basis", variant.basis, 33, form = "amount", zero = "blank" },
        { "steuer", "Steuer", 31, form = "amount", zero = "blank" },
    }

    -- In the order of the form: a text begins a section.
    local boxes = {
        "Steuerfreie Umsätze mit Vorsteuerabzug",
        { "kz41", 41, "Innergemeinschaftliche Lieferungen an Abnehmer mit USt-IdNr.", "basis" },
        { "kz44", 44, "Lieferungen neuer Fahrzeuge an Abnehmer ohne USt-IdNr.", "basis" },
        { "kz49", 49, "Lieferungen neuer Fahrzeuge außerhalb eines Unternehmens", "basis" },
        { "kz43", 43, "Weitere steuerfreie Umsätze mit Vorsteuerabzug", "basis" },
        "Steuerfreie Umsätze ohne Vorsteuerabzug",
        { "kz48", 48, "Umsätze ohne Vorsteuerabzug", "basis" },
        "Steuerpflichtige Umsätze",
        { "kz50", 50, "Umsätze zum allgemeinen Steuersatz", "basis" },
        { "kz86", 86, "Umsätze zum ermäßigten Steuersatz", "basis" },
        { "kz87", 87, "Umsätze zum Steuersatz Kennzahl 87", "basis" },
        { "kz88", 88, "Umsätze zum Steuersatz Kennzahl 88", "basis" },
        { "kz35", 35, "Umsätze, die anderen Steuersätzen unterliegen", "basis" },
        { "kz36", 36, "Steuer darauf", "steuer" },
        { "kz77", 77, "Lieferungen land- und forstwirtschaftlicher Betriebe an Abnehmer mit USt-IdNr.", "basis" },
        { "kz76", 76, "Steuer auf land- und forstwirtschaftliche Umsätze", "steuer" },
        { "kz80", 80, "Steuer auf Umsätze nach Durchschnittsätzen", "steuer" },
        "Innergemeinschaftliche Erwerbe",
        { "kz91", 91, "Steuerfreie innergemeinschaftliche Erwerbe", "basis" },
        { "kz92", 92, "Erwerbe zum allgemeinen Steuersatz", "basis" },
        { "kz93", 93, "Erwerbe zum ermäßigten Steuersatz", "basis" },
        { "kz94", 94, "Erwerbe neuer Fahrzeuge von Lieferern ohne USt-IdNr.", "basis" },
        { "kz95", 95, "Erwerbe zu anderen Steuersätzen", "steuer" },
        "Weitere Bemessungsgrundlagen",
        { "kz42", 42, "Lieferungen des ersten Abnehmers in Dreiecksgeschäften", "basis" },
        { "kz45", 45, "Nicht steuerbare Umsätze", "basis" },
        { "kz57", 57, "Kennzahl 57", "basis" },
        { "kz71", 71, "Kennzahl 71", "basis" },
        { "kz72", 72, "Kennzahl 72", "basis" },
        { "kz78", 78, "Kennzahl 78", "basis" },
        { "kz79", 79, "Kennzahl 79", "basis" },
        "Weitere Steuerbeträge",
        { "kz65", 65, "Steuer infolge Wechsels der Besteuerungsform, Nachsteuer", "steuer" },
        { "kz58", 58, "Kennzahl 58", "steuer" },
        { "kz46", 46, "Kennzahl 46", "steuer" },
        { "kz37", 37, "Kennzahl 37", "steuer" },
        { "kz38", 38, "Kennzahl 38", "steuer" },
        { "kz70", 70, "Kennzahl 70", "steuer" },
        { "kz73", 73, "Kennzahl 73", "steuer" },
        { "kz74", 74, "Kennzahl 74", "steuer" },
        { "kz75", 75, "Kennzahl 75", "steuer" },
        { "kz69", 69, "In Rechnungen unberechtigt ausgewiesene Steuer", "steuer" },
        "Abziehbare Vorsteuer",
        { "kz66", 66, "Vorsteuer aus Rechnungen anderer Unternehmer", "steuer" },
        { "kz61", 61, "Vorsteuer aus innergemeinschaftlichen Erwerben", "steuer" },
        { "kz62", 62, "Entrichtete Einfuhrumsatzsteuer", "steuer" },
        { "kz63", 63, "Vorsteuer nach allgemeinen Durchschnittsätzen", "steuer" },
        { "kz59", 59, "Vorsteuer für Lieferungen neuer Fahrzeuge", "steuer" },
        { "kz64", 64, "Berichtigung des Vorsteuerabzugs", "steuer" },
        "Sondervorauszahlung",
        { "kz39", 39, "Anrechnung der Sondervorauszahlung", "steuer" },
    }

    record(0, {
        text("name1", 0, 41),
        text("name2", 41, 26),
        text("zeile1", 67, 31),
        text("zeile2", 98, 31),
        text("zeile3", 129, 41),
        text("zeile4", 170, 31),
        text("zeile5", 201, 31),
        text("zeile6", 232, 21),
        text("kodierzeile", 253, 35),
        text("steuernummer", 288, 35),
        text("zeitraum", 323, 80),
        i32("periode", 403),
        i32("jahr", 407),
        u32("berichtigt", 411),
        amount("kz41", 415),
        amount("kz42", 428),
        amount("kz44", 441),
        amount("kz49", 454),
        amount("kz43", 467),
        amount("kz48", 480),
        amount("kz50", 493),
        amount("kz86", 506),
        amount("kz35", 519),
        amount("kz36", 532),
        amount("kz77", 545),
        amount("kz76", 558),
        amount("kz80", 571),
        amount("kz91", 584),
        amount("kz92", 597),
        amount("kz93", 610),
        amount("kz94", 623),
        amount("kz65", 636),
        amount("kz66", 649),
        amount("kz61", 662),
        amount("kz62", 675),
        amount("kz63", 688),
        amount("kz64", 701),
        amount("kz59", 714),
        amount("kz58", 727),
        amount("kz69", 740),
        amount("kz39", 753),
        amount("kz57", 766),
        amount("kz71", 779),
        amount("kz72", 792),
        amount("kz78", 818),
        amount("kz79", 831),
        amount("kz75", 857),
        amount("kz45", 870),
        amount("kz46", 883),
        amount("kz87", 896),
        amount("kz88", 909),
        amount("kz37", 922),
        amount("kz38", 935),
        amount("kz95", 948),
        amount("kz70", 961),
        amount("kz73", 974),
        amount("kz74", 987),
        rows = {
            { "anschrift", variant.kodierzeile and 10 or 9 },
            "abschnitt", { "line", 4 }, "abschnitt", "line", "abschnitt",
            { "line", 9 }, "abschnitt", { "line", 5 }, "abschnitt", { "line", 7 }, "abschnitt",
            { "line", 10 }, "abschnitt", { "line", 6 }, "abschnitt", "line",
        },
        emit = function(r)
            head { left = "Umsatzsteuer-Voranmeldung " .. r.jahr, right = "Seite {page} von {pages}" }
            head { left = r.zeitraum, right = r.berichtigt ~= 0 and "Berichtigte Anmeldung" or "" }
            foot { left = r.name1, right = "gedruckt am " .. today() }
            row("anschrift", "Steuernummer: " .. r.steuernummer)
            if variant.kodierzeile then row("anschrift", r.kodierzeile) end
            for _, name in ipairs { "name1", "name2", "zeile1", "zeile2", "zeile3", "zeile4", "zeile5", "zeile6" } do
                if r[name] ~= "" then row("anschrift", r[name]) end
            end
            for _, box in ipairs(boxes) do
                if type(box) == "string" then
                    row("abschnitt", box)
                else
                    row("line", { kz = tostring(box[2]), text = box[3], [box[4]] = r[box[1]] })
                end
            end
        end,
    })
end
