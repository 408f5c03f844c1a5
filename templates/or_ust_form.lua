-- The form of the Umsatzsteuervoranmeldung, which its variants share: the boxes in its order, base and tax of a rate
-- side by side. In a variant with `whole` the bases that have no Pfennigs are shown without them, and the line for the
-- tax office's machine stands beside the address.
return function(variant)
    page {
        margins = { top = 10, right = 10, bottom = 8, left = 20 },
        font = "Roboto Condensed",
        fontsize = 8.5,
        head = 2,
        foot = 1,
    }

    style("title", { size = 13, height = 7 })
    style("subtitle", { size = 10 })
    style("anschrift", { like = "text", height = 3.6 })
    style("berichtigt", { like = "text", bold = true, size = 10, height = 5 })
    style("ueberschrift", { like = "text", bold = true, height = 4.4, below = "line" })
    style("abschnitt", { like = "head", height = 4.8, below = "hair" })
    style("line", { height = 3.8, counts = false })
    style("note", { like = "text", italic = true, height = 4.2 })
    style("unterschrift", { like = "text", height = 6 })

    columns {
        { "text", "", 100 },
        { "kz1", "", 9 },
        { "basis", "", 30, align = "right" },
        { "abstand", "", 3 },
        { "kz2", "", 9 },
        { "steuer", "", 28, form = "amount", zero = "blank" },
    }

    -- In the order of the form: a text begins a section, a row has its text, the box of its base and that of its tax.
    local form = {
        "Steuerfreie Umsätze mit Vorsteuerabzug",
        { "Innergemeinschaftliche Lieferungen an Abnehmer mit USt-IdNr.", 41 },
        { "Lieferungen neuer Fahrzeuge an Abnehmer ohne USt-IdNr.", 44 },
        { "Lieferungen neuer Fahrzeuge außerhalb eines Unternehmens", 49 },
        { "Weitere steuerfreie Umsätze mit Vorsteuerabzug", 43 },
        "Steuerfreie Umsätze ohne Vorsteuerabzug",
        { "Umsätze ohne Vorsteuerabzug", 48 },
        "Steuerpflichtige Umsätze",
        { "Umsätze zum allgemeinen Steuersatz", 50 },
        { "Umsätze zum ermäßigten Steuersatz", 86 },
        { "Umsätze zum Steuersatz von 12 %", 87 },
        { "Umsätze zum Steuersatz von 16 %", 88 },
        { "Umsätze, die anderen Steuersätzen unterliegen", 35, 36 },
        { "Lieferungen land- und forstwirtschaftlicher Betriebe an Abnehmer mit USt-IdNr.", 77 },
        { "Land- und forstwirtschaftliche Umsätze, für die Steuer zu entrichten ist", 76, 80 },
        "Innergemeinschaftliche Erwerbe",
        { "Steuerfreie innergemeinschaftliche Erwerbe", 91 },
        { "Erwerbe zum allgemeinen Steuersatz", 92 },
        { "Erwerbe zum ermäßigten Steuersatz", 93 },
        { "Erwerbe zu anderen Steuersätzen", 95 },
        { "Erwerbe neuer Fahrzeuge von Lieferern ohne USt-IdNr.", 94 },
        "Weitere Bemessungsgrundlagen und Steuerbeträge",
        { "Lieferungen des ersten Abnehmers in Dreiecksgeschäften", 42 },
        { "Nicht steuerbare Umsätze", 45 },
        { "Konten mit den Kennzahlen 57 und 58", 57, 58 },
        { "Konten mit der Kennzahl 71", 71 },
        { "Konten mit der Kennzahl 72", 72 },
        { "Konten mit der Kennzahl 78", 78 },
        { "Konten mit der Kennzahl 79", 79 },
        { "Konten mit der Kennzahl 37", nil, 37 },
        { "Konten mit der Kennzahl 38", nil, 38 },
        { "Konten mit der Kennzahl 46", nil, 46 },
        { "Konten mit der Kennzahl 70", nil, 70 },
        { "Konten mit der Kennzahl 73", nil, 73 },
        { "Konten mit der Kennzahl 74", nil, 74 },
        { "Konten mit der Kennzahl 75", nil, 75 },
        { "Steuer infolge Wechsels der Besteuerungsform, Nachsteuer auf Anzahlungen", nil, 65 },
        { "In Rechnungen unrichtig oder unberechtigt ausgewiesene Steuer", nil, 69 },
        "Abziehbare Vorsteuer",
        { "Vorsteuer aus Rechnungen anderer Unternehmer", nil, 66 },
        { "Vorsteuer aus innergemeinschaftlichen Erwerben", nil, 61 },
        { "Entrichtete Einfuhrumsatzsteuer", nil, 62 },
        { "Vorsteuer nach allgemeinen Durchschnittsätzen", nil, 63 },
        { "Vorsteuer für Lieferungen neuer Fahrzeuge außerhalb eines Unternehmens", nil, 59 },
        { "Berichtigung des Vorsteuerabzugs", nil, 64 },
        "Sondervorauszahlung",
        { "Anrechnung der Sondervorauszahlung", nil, 39 },
    }

    -- Where each box lies in the record. Those that have no Pfennigs in a variant with whole amounts are marked.
    local boxes = {
        { 41, 415, true }, { 42, 428, true }, { 44, 441, true }, { 49, 454, true }, { 43, 467, true },
        { 48, 480, true }, { 50, 493, true }, { 86, 506, true }, { 35, 519, true }, { 36, 532 }, { 77, 545, true },
        { 76, 558 }, { 80, 571 }, { 91, 584, true }, { 92, 597, true }, { 93, 610, true }, { 94, 623, true },
        { 65, 636 }, { 66, 649 }, { 61, 662 }, { 62, 675 }, { 63, 688 }, { 64, 701 }, { 59, 714 }, { 58, 727 },
        { 69, 740 }, { 39, 753 }, { 57, 766, true }, { 71, 779, true }, { 72, 792, true }, { 78, 818, true },
        { 79, 831, true }, { 75, 857 }, { 45, 870 }, { 46, 883 }, { 87, 896 }, { 88, 909 }, { 37, 922 }, { 38, 935 },
        { 95, 948 }, { 70, 961 }, { 73, 974 }, { 74, 987 },
    }

    -- Input tax is deducted: the record holds it below zero, the form shows what is claimed.
    local deducted = { [66] = true, [61] = true, [62] = true, [63] = true, [59] = true, [64] = true }

    local header = {
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
        u32("gesetzt", 411),
    }
    local columnsOfData = {
        { "mandant", "Mandant" },
        { "steuernummer", "Steuernummer" },
        { "zeitraum", "Zeitraum" },
        { "jahr", "Kalenderjahr", form = "number" },
        { "berichtigt", "Berichtigte Anmeldung", form = "flag" },
    }
    local isWhole = {}
    for _, box in ipairs(boxes) do
        table.insert(header, amount("kz" .. box[1], box[2]))
        isWhole[box[1]] = variant.whole and box[3]
    end
    -- Data has the boxes in the order of the form.
    for _, line in ipairs(form) do
        for i = 2, 3 do
            local number = type(line) == "table" and line[i]
            if number then
                table.insert(columnsOfData, { tostring(number), "Kennzahl " .. number, form = "amount" })
            end
        end
    end
    fields(columnsOfData)

    -- As the form shows it; an empty box for nothing.
    local function shown(r, number)
        local pfennig = r["kz" .. number]
        if pfennig == 0 then return "" end
        local written = money(pfennig)
        if isWhole[number] then written = written:sub(1, -4) end
        return written
    end

    local function zeitraumOf(r)
        if r.periode == 17 then return "Kalenderjahr " .. r.zeitraum end
        return r.zeitraum
    end

    header.rows = { { "anschrift", 8 }, "berichtigt", "ueberschrift" }
    for _, line in ipairs(form) do
        table.insert(header.rows, type(line) == "string" and "abschnitt" or "line")
    end
    table.insert(header.rows, { "note", 3 })
    table.insert(header.rows, { "unterschrift", 2 })

    header.emit = function(r)
        for _, box in ipairs(boxes) do
            if deducted[box[1]] then r["kz" .. box[1]] = -r["kz" .. box[1]] end
            r[tostring(box[1])] = r["kz" .. box[1]]
        end
        r.mandant = r.name1
        r.berichtigt = r.gesetzt ~= 0
        data(r)

        head { left = "Umsatzsteuer-Voranmeldung " .. r.jahr, right = "Seite {page} von {pages}" }
        head { left = zeitraumOf(r), right = r.berichtigt and "Berichtigte Anmeldung" or "" }
        foot { left = r.name1, right = "gedruckt am " .. today() }

        -- Beside the address what the office files the return under.
        local beside = {}
        if r.steuernummer ~= "" then table.insert(beside, "Steuernummer " .. r.steuernummer) end
        if variant.whole and r.kodierzeile ~= "" then table.insert(beside, "Kodierzeile " .. r.kodierzeile) end
        local line = 0
        for _, name in ipairs { "name1", "name2", "zeile1", "zeile2", "zeile3", "zeile4", "zeile5", "zeile6" } do
            if r[name] ~= "" then
                line = line + 1
                row("anschrift", { text = r[name], kz1 = beside[line] })
            end
        end
        for i = line + 1, #beside do row("anschrift", { kz1 = beside[i] }) end
        if r.berichtigt then row("berichtigt", "Berichtigte Anmeldung") end
        row("ueberschrift", { basis = "Bemessungsgrundlage", steuer = "Steuer" })

        for _, entry in ipairs(form) do
            if type(entry) == "string" then
                row("abschnitt", entry)
            else
                local base, tax = entry[2], entry[3]
                row("line", {
                    text = entry[1],
                    kz1 = base and tostring(base),
                    basis = base and shown(r, base),
                    kz2 = tax and tostring(tax),
                    steuer = tax and r["kz" .. tax],
                })
            end
        end
        row("note", "Vorsteuer ist als Abzug zu lesen: sie steht hier ohne Vorzeichen, solange sie die Zahlung mindert.")
        if variant.whole then row("note", "Bemessungsgrundlagen stehen in vollen Beträgen, ihre Pfennige fallen weg.") end
        row("note", "Aufstellung für die eigenen Akten. Sie ersetzt nicht den amtlichen Vordruck.")
        row("unterschrift", {})
        row("unterschrift", "Datum ______________________    Unterschrift ____________________________________________")
    end
    record(0, header)
end
