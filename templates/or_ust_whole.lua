-- The Umsatzsteuervoranmeldung with bases in whole amounts, the same up to 1996 and from 1997 on.

local form = share("or_ust_form")

report { id = "tervoUSTVA0.0", title = "Umsatzsteuervoranmeldung" }

form { whole = true }
