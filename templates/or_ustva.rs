-- Umsatzsteuervoranmeldung in the variant with exact amounts.

local form = share("or_ust_form")

report { id = "tervoUSTVA0.0", title = "Umsatzsteuervoranmeldung" }

form { whole = false }
