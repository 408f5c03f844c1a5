-- Umsatzsteuervoranmeldung up to 1996, bases in whole amounts.

share("or_ust_whole")
