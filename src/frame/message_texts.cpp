#include "src/frame/messages.h"
#include "text/windows1252.h"

#include <algorithm>
#include <iterator>

namespace vark {

namespace {

using namespace text;

struct NumberedText {
    int32_t Number;
    const char *Text;
};

// In ascending order: the library's own from 1000, the statuses of the record manager from 3100.
constexpr NumberedText numberedTexts[] = {
    {1000, "Geben Sie bitte einen Prozentsatz zwischen 0,00 und 99,99 ein."_w},
    {1001, "Bitte geben Sie Beträge im folgenden Format ein : <bis zu 9 "
           "Vorkommastellen>,<bis zu 2 Nachkommastellen>"_w},
    {1400, "Die Listbox kann nicht vollständig gefüllt werden!"_w},
    {1401, "Bitte wählen Sie einen Eintrag aus der Listbox aus."_w},
    {1402, "Die Stapelnamendatei konnte nicht angelegt werden!"_w},
    {1403, "Die Stapelnamendatei %s kann nicht geöffnet werden!"_w},
    {1404, "Der Stapel '%s' konnte nicht angelegt werden!"_w},
    {1405, "Der Stapel '%s' existiert bereits!"_w},
    {1406, "Der Stapel '%s' ist nicht änderbar!"_w},
    {1407, "Der Stapel '%s' konnte nicht gelöscht werden!"_w},
    {1408, "Der %s existiert nicht!"_w},
    {1409, "Die %sontonummer ist unzulässig!"_w},
    {1410, "Der %s ist unzulässig!"_w},
    {1411, "In dieser Buchung darf keine Steuer angegeben werden!"_w},
    {1412, "Das Buchungsdatum ist unzulässig!"_w},
    {1413, "Die Kontoart ist unzulässig!"_w},
    {1414, "unzulässige Aktion!"_w},
    {1415, "Das Konto existiert nicht!"_w},
    {1416, "Fehlendes Kürzel!"_w},
    {1417, "Das %s existiert bereits!"_w},
    {1418, "Fehlender Name!"_w},
    {1419, "%s unzulässig!"_w},
    {1420, "Der Datensatz wird von einer anderen Anwendung benutzt!"_w},
    {1421, "Die VARK-DLL kann nicht initialisiert werden!"_w},
    {1422, "Die VARK-DLL wird gerade von einem anderen Programm benutzt!"_w},
    {1423, "Bitte geben Sie einen Stapelnamen ein!"_w},
    {1424, "Es konnte kein Datenbankpfad gefunden werden. Dieser muß in die VARK.INI im "
           "Windows-Verzeichnis unter 'Pfad=...' eingetragen werden!"_w},
    {1425, "Soll- und Habenkontonummern sind gleich!"_w},
    {1426, "Es konnte keine Landbezeichnung gefunden werden. Diese muß in die VARK.INI im "
           "Windows-Verzeichnis unter 'Land=...' eingetragen werden!"_w},
    {1427, "Das Konto ist nicht löschbar!"_w},
    {1428, "Die Kostenstelle %s existiert nicht!"_w},
    {1429, "Die Kostenstellen müssen sich unterscheiden!"_w},
    {1430, "Die Kostenkennung ist unzulässig!"_w},
    {1431, "Die Kostenkennung darf nur in Verbindung mit mind. einer Kostenstelle übergeben werden!"_w},
    {1432, "Die Anzahl der Teilbuchungen ist nicht korrekt!"_w},
    {1433, "Bei einer Splitbuchung muß entweder das Soll- oder das Habenkonto jeder "
           "Teilbuchung gleich sein!"_w},
    {1434, "Auf Soll- und Habenseite sind in jeder Teilbuchung die gleichen Kontonummern!"_w},
    {1435, "Der Steuersatz bei einer Buchung auf ein Erlöskonto mit festem Steuersatz darf "
           "nicht verändert werden!"_w},
    {1436, "Im Stapel '%s' befinden sich noch OP-Ausgleichsbuchungen. Er darf deshalb nicht "
           "gelöscht werden!"_w},
    {1437, "Die Jahresangabe ist unzulässig!"_w},
    {1438, "Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!"_w},
    {1439, "Zur weiteren Bearbeitung müssen Sie in dem Feld, in welches die Einfügemarke "
           "gesetzt wird, eine Eingabe vornehmen."_w},
    {1440, "Unzulässige Tagesangabe!"_w},
    {1441, "Unzulässige Monatsangabe!"_w},
    {1442, "Unzulässige Jahresangabe!"_w},
    {1443, "Das Von-Datum darf nicht hinter dem Bis-Datum liegen!"_w},
    {1444, "Das Intervall eines wiederkehrenden Stapels muß zwischen 1 und 99 Monaten liegen"_w},
    {1445, "Bei Buchungen auf GuV-Konten muß zumindest eine Kostenstelle bebucht werden. "
           "Dazu müssen Sie eine Kostenschablone im GuV-Konto hinterlegen und die "
           "Kostenaufteilung mit <OK> abschließen."_w},
    {1446, "%s konnte nicht erstellt werden!"_w},
    {1447, "Es existiert kein Konto mit dieser Kontonummer!"_w},
    {1448, "Bitte geben Sie einen Mindestumsatz ein, der größer als 0 ist."_w},
    {1449, "Es kann kein Speicherplatz mehr vom Betriebssystem angefordert werden. Beenden "
           "Sie bitte das Programm und andere Anwendungen und starten Sie erneut."_w},
    {1450, "Der Betrag kann nicht umgerechnet werden!"_w},
    {1451, "Wählen Sie bitte eine Währung aus."_w},
    {1452, "Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt."_w},
    {1453, "Sie haben in diesem Monat bereits einen Durchschnittskurs erfaßt."_w},
    {1454, "Wählen Sie bitte einen Kurs aus."_w},
    {1455, "Der Kurs kann nicht gelöscht werden."_w},
    {1456, "Reportdatei '%s' konnte nicht gefunden werden oder beim Öffnen ist ein Fehler aufgetreten."_w},
    {1457, "Von- und Bis-Datum müssen im gleichen Geschäftsjahr liegen."_w},
    {1458, "Es existiert keine Kostenstelle mit dieser Nummer!"_w},
    {1459, "Bei einer Kostenstellenbuchung muß mindestens ein GuV-Konto beteiligt sein!"_w},
    {1460, "Das Datum muß innerhalb des Archivjahres liegen!"_w},
    {1800, "Soll der leere Stapel '%s' wirklich gelöscht werden?"_w},
    {1801, "Alle Stapelbuchungen im Stapel '%s' werden mitgelöscht. Soll der Stapel "
           "trotzdem gelöscht werden?"_w},
    {1802, "Zu dem angegebenen Datum wurde noch kein Wechselkurs erfaßt. Wollen Sie diesen "
           "gleich erfassen?"_w},
    {1803, "Achtung! Nach dem Ausdruck der Voranmeldung wird dieser Zeitraum für weitere "
           "Buchungen gesperrt. Wenn Sie sich nur eine vorläufige Voranmeldung ansehen "
           "möchten, so sollten Sie  die Voranmeldung am Bildschirm ausgeben. Soll die "
           "Voranmeldung trotzdem gedruckt werden?"_w},
    {3100, "OK"_w},
    {3101, "Invalid operation"_w},
    {3102, "I/O Error"_w},
    {3103, "File not open"_w},
    {3104, "Key value not found"_w},
    {3105, "Duplicate key value"_w},
    {3106, "Invalid key number"_w},
    {3107, "Different key number"_w},
    {3108, "Invalid positioning"_w},
    {3109, "End of file"_w},
    {3110, "Modifiable key value error"_w},
    {3111, "Invalid filename"_w},
    {3112, "File %s not found"_w},
    {3113, "Extended file error"_w},
    {3114, "Pre-Image open error"_w},
    {3115, "Pre-Image I/O error"_w},
    {3116, "Expansion error"_w},
    {3117, "Close error"_w},
    {3118, "Disk full"_w},
    {3119, "Unrecoverable error"_w},
    {3120, "Record manager inactive"_w},
    {3121, "Key buffer too short"_w},
    {3122, "Data buffer length"_w},
    {3123, "Position block length"_w},
    {3124, "Page size error"_w},
    {3125, "Create I/O error"_w},
    {3126, "Number of keys"_w},
    {3127, "Invalid key position"_w},
    {3128, "Invalid record length"_w},
    {3129, "Invalid key length"_w},
    {3130, "Not a btrieve file"_w},
    {3131, "File already extended"_w},
    {3132, "Extend I/O error"_w},
    {3134, "Invalid extension name"_w},
    {3135, "Directory error"_w},
    {3136, "Transaction error"_w},
    {3137, "Transaction is active"_w},
    {3138, "Transaction control file I/O error"_w},
    {3139, "End/Abort transaction error"_w},
    {3140, "Transaction max files"_w},
    {3141, "Operation not allowed"_w},
    {3142, "Incomplete accelerated access"_w},
    {3143, "Invalid record address"_w},
    {3144, "Null key path"_w},
    {3145, "Inconsistent key flags"_w},
    {3146, "Access to file denied"_w},
    {3147, "Maximum open files"_w},
    {3148, "Invalid alternate sequence definition"_w},
    {3149, "Key type error"_w},
    {3150, "Owner already set"_w},
    {3151, "Invalid owner"_w},
    {3152, "Error writing cache"_w},
    {3153, "Invalid interface"_w},
    {3154, "Variable page error"_w},
    {3155, "Autoincrement error"_w},
    {3156, "Incomplete index"_w},
    {3157, "EMM context error"_w},
    {3158, "Compression buffer too short"_w},
    {3159, "File already exists"_w},
    {3160, "Reject count reached"_w},
    {3161, "Workspace buffer too small"_w},
    {3162, "Incorrect descriptor"_w},
    {3163, "Incorrect extended insert buffer"_w},
    {3164, "Filter limit reached"_w},
    {3165, "Incorrect field offset"_w},
    {3174, "End Transaction changed to Abort Transaction"_w},
    {3175, "Server routing list too small"_w},
    {3176, "File server list too small"_w},
    {3177, "Vap wait err"_w},
    {3178, "Deadlock detected"_w},
    {3179, "Programming error"_w},
    {3180, "Conflict error"_w},
    {3181, "Lock error"_w},
    {3182, "Lost position"_w},
    {3183, "Read outside transaction"_w},
    {3184, "Record in use"_w},
    {3185, "File in use"_w},
    {3186, "File table full"_w},
    {3187, "Handle table full"_w},
    {3188, "Incompatible mode error"_w},
    {3190, "Redirected device table full"_w},
    {3191, "Server error"_w},
    {3192, "Transaction table full"_w},
    {3193, "Incompatible lock type"_w},
    {3194, "Permission error"_w},
    {3195, "Session no longer valid"_w},
    {3196, "Communications environment error"_w},
    {3197, "Data message too small"_w},
    {3198, "Internal transaction error"_w},
    {3201, "Lock Parameter Out of Range"_w},
    {3202, "Memory Allocation Error"_w},
    {3203, "Memory Parameter Too Small"_w},
    {3204, "Page Size Parameter Out Of Range"_w},
    {3205, "Invalid Preimage Drive Parameter"_w},
    {3206, "Preimage Buffer Parameter Out Of Range"_w},
    {3207, "Files Parameter Out Of Range"_w},
    {3208, "Invalid Initialization Parameter"_w},
    {3209, "Invalid Transaction Parameter"_w},
    {3211, "Compression Buffer Out Of Range"_w},
    {3212, "Invalid Value For /N: Option"_w},
    {3213, "DLL's Task List Is Full"_w},
    {3214, "Stop Warning"_w},
    {3216, "Already Initialized"_w},
    {3221, "Insufficient Memory"_w},
    {3222, "Parameter Invalid or Out Of Range"_w},
    {3223, "Cannot Access Files on local Disk"_w},
    {3225, "Spx not installed Correctly"_w},
    {3227, "No Task Slots available"_w},
};

} // namespace

const char *MessageText(int32_t number)
{
    const NumberedText *const end = std::end(numberedTexts);
    const NumberedText *const entry =
        std::lower_bound(std::begin(numberedTexts), end, number,
                         [](const NumberedText &text, int32_t wanted) { return text.Number < wanted; });
    return entry != end && entry->Number == number ? entry->Text : nullptr;
}

} // namespace vark
