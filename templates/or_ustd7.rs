-- Umsatzsteuervoranmeldung from 1997 on, bases in whole amounts.

local form = share("or_ust_form")

report { id = "tervoUSTVA0.0", title = "Umsatzsteuervoranmeldung" }

form { basis = "Bemessungsgrundlage\nvolle Beträge", kodierzeile = true }
