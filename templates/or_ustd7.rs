-- Umsatzsteuervoranmeldung from 1997 on, bases in whole amounts.

share("or_ust_whole")
