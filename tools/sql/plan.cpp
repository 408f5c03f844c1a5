#include "tools/sql/plan.h"

#include "tools/common/calendar.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace sql {

using namespace tools;

// ---- Choosing a key ----

namespace {

constexpr unsigned char isEqual = SQLITE_INDEX_CONSTRAINT_EQ;

bool IsLower(unsigned char op)
{
    return op == SQLITE_INDEX_CONSTRAINT_GT || op == SQLITE_INDEX_CONSTRAINT_GE;
}

bool IsUpper(unsigned char op)
{
    return op == SQLITE_INDEX_CONSTRAINT_LT || op == SQLITE_INDEX_CONSTRAINT_LE;
}

// The first condition on a column with one of these comparisons; -1 for none. Under another collation than
// that of bytes the order of a key says nothing.
template <typename Fits> int FindCondition(sqlite3_index_info *info, int column, Fits fits)
{
    for (int i = 0; i < info->nConstraint; ++i) {
        const auto &condition = info->aConstraint[i];
        if (condition.usable == 0 || condition.iColumn != column || !fits(condition.op)) continue;
        if (std::strcmp(sqlite3_vtab_collation(info, i), "BINARY") == 0) return i;
    }
    return -1;
}

int FindEqual(sqlite3_index_info *info, int column)
{
    return FindCondition(info, column, [](unsigned char op) { return op == isEqual; });
}

// The column that a segment of a key is compared by: that of its field, or the day in it.
int ColumnOf(const Planned &table, const KeySegment &segment)
{
    const FieldLayout *field = FieldOf(table.Layout, segment);
    if (field == nullptr) return -1;
    const Gives wanted = field->Type == Form::DayNumber ? Gives::DayOfNumber : Gives::Field;
    for (size_t i = 0; i < table.Columns.size(); ++i) {
        if (table.Columns[i].Field == field && table.Columns[i].What == wanted) return static_cast<int>(i);
    }
    return -1;
}

// Whether the order of the key is that of the column's values. Blanks before an account turn it.
bool HasOrder(const FieldLayout &field) { return field.Type != Form::Konto; }

struct Use {
    int Key = asTheyLie;
    std::string Roles;           // of what follows
    std::vector<int> Conditions; // by their numbers
    bool IsWhole = false;        // every segment is given
    double Rows = 1;             // part of the table's
};

// How much of a table has one value of a field, or lies in a range.
double PartOfEqual(const FieldLayout &field)
{
    switch (field.Type) {
    case Form::SortDay:
    case Form::DayNumber: return 1.0 / 250;
    case Form::Konto: return 1.0 / 100;
    default: return 1.0 / 500;
    }
}

Use UseOf(const Planned &table, sqlite3_index_info *info, size_t number)
{
    const KeyLayout &key = table.Layout.Keys[number];
    Use use;
    use.Key = static_cast<int>(number);
    for (const KeySegment &segment : key.Segments) {
        const FieldLayout *field = FieldOf(table.Layout, segment);
        const int column = ColumnOf(table, segment);
        if (field == nullptr || column < 0) return use;
        const int equal = FindEqual(info, column);
        if (equal >= 0) {
            use.Roles.push_back(RoleEqual);
            use.Conditions.push_back(equal);
            use.Rows *= PartOfEqual(*field);
            if (field->Type == Form::DayNumber) return use; // of which the day is no more than the beginning
            use.IsWhole = &segment == &key.Segments.back();
            continue;
        }
        if (!HasOrder(*field)) return use;
        const auto add = [&](int condition, Role role) {
            if (condition < 0) return;
            use.Roles.push_back(role);
            use.Conditions.push_back(condition);
            use.Rows *= 0.3;
        };
        add(FindCondition(info, column, IsLower), RoleFrom);
        add(FindCondition(info, column, IsUpper), RoleTo);
        return use;
    }
    return use;
}

// Records of a year's table, so that joins begin with the smaller one.
double RecordsOf(const TableLayout &layout)
{
    switch (layout.Id) {
    case vark::TableBube: return 100000;
    case vark::TableKobu: return 20000;
    case vark::TableBat:
    case vark::TableSplit:
    case vark::TableOpdebi:
    case vark::TableOpkred: return 5000;
    case vark::TableDebi:
    case vark::TableKred: return 2000;
    case vark::TableFista: return 5;
    default: return 300;
    }
}

constexpr double yearsOfBooks = 8;

} // namespace

int Plan(const Planned &table, sqlite3_index_info *info)
{
    Use use;
    for (size_t number = 0; number < table.Layout.Keys.size(); ++number) {
        Use other = UseOf(table, info, number);
        if (!other.Roles.empty() && other.Rows < use.Rows) use = std::move(other);
    }
    double rows = RecordsOf(table.Layout) * use.Rows;
    const bool isUnique =
        use.Key != asTheyLie && use.IsWhole && !table.Layout.Keys[static_cast<size_t>(use.Key)].Duplicates;
    if (isUnique) rows = 1;

    std::string roles;
    std::vector<int> conditions;
    bool isOneYear = table.IsOneYear;
    if (!table.IsOneYear) {
        constexpr int mandantColumn = 0;
        constexpr int yearColumn = 1;
        // Behind or before the year itself, where it is not to be read either.
        const auto take = [&](int condition, Role role, Role strict) {
            if (condition < 0) return false;
            const unsigned char op = info->aConstraint[condition].op;
            const bool isStrict = op == SQLITE_INDEX_CONSTRAINT_GT || op == SQLITE_INDEX_CONSTRAINT_LT;
            roles.push_back(isStrict ? strict : role);
            conditions.push_back(condition);
            return true;
        };
        const bool isMandant = take(FindEqual(info, mandantColumn), RoleMandant, RoleMandant);
        const bool isYear = take(FindEqual(info, yearColumn), RoleYear, RoleYear);
        bool isRange = false;
        if (!isYear) {
            isRange = take(FindCondition(info, yearColumn, IsLower), RoleYearFrom, RoleYearAfter);
            isRange = take(FindCondition(info, yearColumn, IsUpper), RoleYearTo, RoleYearBefore) || isRange;
        }
        isOneYear = isMandant && isYear;
        rows *= isOneYear ? 1 : isMandant || isYear ? 3 : isRange ? 4 : yearsOfBooks;
    }
    roles += use.Roles;
    conditions.insert(conditions.end(), use.Conditions.begin(), use.Conditions.end());
    for (size_t i = 0; i < conditions.size(); ++i) {
        info->aConstraintUsage[conditions[i]].argvIndex = static_cast<int>(i) + 1;
    }
    info->idxNum = use.Key;
    info->idxStr = sqlite3_mprintf("%s", roles.c_str());
    if (info->idxStr == nullptr) return SQLITE_NOMEM;
    info->needToFreeIdxStr = 1;
    // Along a key each record is looked up; an opened file costs as much as some records.
    info->estimatedRows = std::max<sqlite3_int64>(1, static_cast<sqlite3_int64>(rows));
    info->estimatedCost = rows * (use.Key == asTheyLie ? 1 : 2) + (isOneYear ? 20 : 20 * yearsOfBooks);
    if (isUnique && isOneYear) info->idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
    return SQLITE_OK;
}

Value ValueOf(sqlite3_value *value)
{
    Value made;
    made.Type = sqlite3_value_type(value);
    if (made.Type == SQLITE_INTEGER) made.Integer = sqlite3_value_int64(value);
    if (made.Type == SQLITE_FLOAT) {
        const double real = sqlite3_value_double(value);
        constexpr double far = 4e18;
        made.IsWhole = real == std::floor(real);
        made.Integer = static_cast<int64_t>(std::clamp(std::floor(real), -far, far));
    }
    if (made.Type == SQLITE_TEXT) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
        if (text == nullptr) throw std::bad_alloc();
        made.Text.assign(text, static_cast<size_t>(sqlite3_value_bytes(value)));
    }
    return made;
}

// ---- Bytes of a key ----

namespace {

// What a condition on a segment says of its bytes, or of the first of them.
struct Bounds {
    bool IsNothing = false;          // no record can fulfil it
    std::vector<std::string> Equal;  // one of these; none where it cannot be told
    std::optional<std::string> At{}; // of a range; none where the bound says nothing
};

bool IsAscii(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsDayForm(Form form) { return form == Form::SortDay || form == Form::DayNumber; }

// "1998-04-15" and what begins so; a month or a year alone stands for its first day.
bool ReadDay(const std::string &text, bool needsWhole, Day &day)
{
    const auto number = [&text](size_t at, size_t size) {
        int value = 0;
        for (size_t i = at; i < at + size; ++i) {
            if (text[i] < '0' || text[i] > '9') return -1;
            value = value * 10 + text[i] - '0';
        }
        return value;
    };
    if (needsWhole ? text.size() != 10 : text.size() != 4 && text.size() != 7 && text.size() < 10) {
        return false;
    }
    const int year = number(0, 4);
    int month = 1;
    int dayOfMonth = 1;
    if (text.size() >= 7) month = text[4] == '-' ? number(5, 2) : -1;
    if (text.size() >= 10) dayOfMonth = text[7] == '-' ? number(8, 2) : -1;
    // The years that the records can tell.
    if (year < 1981 || year > 2078 || month < 1 || month > 12) return false;
    if (dayOfMonth < 1 || dayOfMonth > DaysInMonth(year, month)) return false;
    day = DayOf(year, month, dayOfMonth);
    return true;
}

std::string SortBytes(Day day, int firstMonth)
{
    vark::SortDate sort;
    MakeSort(sort, day, firstMonth);
    return {sort, sizeof sort - 1};
}

std::string Justified(const std::string &bytes)
{
    return std::string(vark::accountDigits - bytes.size(), ' ') + bytes + '\0';
}

// An account that equals a number may have zeros before it: "840" and "0840" are the same number.
Bounds AccountsOfNumber(const Value &value)
{
    Bounds bounds;
    if (!value.IsWhole || value.Integer < 0) return bounds;
    std::string digits = std::to_string(value.Integer);
    bounds.IsNothing = digits.size() > vark::accountDigits;
    for (; digits.size() <= vark::accountDigits; digits.insert(0, 1, '0')) {
        bounds.Equal.push_back(Justified(digits));
    }
    return bounds;
}

Bounds EqualText(const FieldLayout &field, const Value &value, int firstMonth)
{
    Bounds bounds;
    if (value.Type == SQLITE_BLOB) {
        bounds.IsNothing = true;
        return bounds;
    }
    if (value.Type != SQLITE_TEXT) {
        // Compared as a number, a text may be written in many ways.
        return field.Type == Form::Konto ? AccountsOfNumber(value) : bounds;
    }
    if (IsDayForm(field.Type)) {
        Day day = 0;
        // Other texts are equal to damaged fields alone.
        if (ReadDay(value.Text, true, day)) bounds.Equal.push_back(SortBytes(day, firstMonth));
        return bounds;
    }
    const std::string bytes = FromUtf8(value.Text);
    const size_t width = field.Type == Form::Konto ? vark::accountDigits : field.Width;
    if (bytes.size() > width || ToUtf8(bytes) != value.Text) {
        bounds.IsNothing = true;
    } else if (field.Type == Form::Konto) {
        bounds.IsNothing = Trimmed(bytes) != bytes;
        bounds.Equal.push_back(Justified(bytes));
    } else {
        bounds.Equal.push_back(bytes.size() < width ? bytes + '\0' : bytes);
    }
    return bounds;
}

// A bound of a range of texts: of ASCII letters alone, since the others stand in another order in UTF-8.
Bounds RangeText(const FieldLayout &field, const Value &value, bool isUpper, int firstMonth)
{
    Bounds bounds;
    if (value.Type != SQLITE_TEXT) return bounds;
    if (IsDayForm(field.Type)) {
        Day day = 0;
        if (ReadDay(value.Text, false, day)) bounds.At = SortBytes(day, firstMonth);
        return bounds;
    }
    if (field.Type != Form::Text && field.Type != Form::Digits) return bounds;
    if (!IsAscii(value.Text) || value.Text.find('\0') != std::string::npos) return bounds;
    std::string bytes = value.Text.substr(0, field.Width);
    // Up to "M" means up to the text "M" itself, with its end; of a longer one its beginning is enough.
    if (isUpper && bytes.size() < field.Width) bytes += '\0';
    bounds.At = bytes;
    return bounds;
}

struct NumberForm {
    int64_t Lowest;
    int64_t Highest;
    bool IsAbsolute; // the index goes by the absolute value
};

template <typename Number> constexpr NumberForm FormOf(bool isAbsolute)
{
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max(), isAbsolute};
}

NumberForm FormOf(const KeySegment &segment)
{
    const bool isShort = segment.Length == sizeof(int16_t);
    if (segment.Type == KeyType::Unsigned) {
        return isShort ? FormOf<uint16_t>(false) : FormOf<uint32_t>(false);
    }
    const bool isAbsolute = segment.Type == KeyType::Autoincrement;
    return isShort ? FormOf<int16_t>(isAbsolute) : FormOf<int32_t>(isAbsolute);
}

std::string NumberBytes(const KeySegment &segment, int64_t number)
{
    // The lowest bytes come first, whatever the sign.
    std::string bytes(segment.Length, '\0');
    std::memcpy(bytes.data(), &number, segment.Length);
    return bytes;
}

bool IsNumeric(const Value &value) { return value.Type == SQLITE_INTEGER || value.Type == SQLITE_FLOAT; }

Bounds EqualNumber(const KeySegment &segment, const Value &value)
{
    Bounds bounds;
    if (!IsNumeric(value)) return bounds; // a text may be a number as well
    const NumberForm form = FormOf(segment);
    bounds.IsNothing = !value.IsWhole || value.Integer < form.Lowest || value.Integer > form.Highest;
    if (!bounds.IsNothing) bounds.Equal.push_back(NumberBytes(segment, value.Integer));
    return bounds;
}

Bounds RangeNumber(const KeySegment &segment, const Value &value, bool isUpper)
{
    Bounds bounds;
    const NumberForm form = FormOf(segment);
    if (!IsNumeric(value) || form.IsAbsolute) return bounds;
    const int64_t number = isUpper && !value.IsWhole ? value.Integer + 1 : value.Integer;
    if (number < form.Lowest || number > form.Highest) return bounds;
    bounds.At = NumberBytes(segment, number);
    return bounds;
}

Bounds BoundsOf(const FieldLayout &field, const KeySegment &segment, Role role, const Value &value,
                int firstMonth)
{
    if (value.Type == SQLITE_NULL) return {true, {}}; // nothing is equal to it, or beside it
    const bool isText = segment.Type == KeyType::String;
    if (role == RoleEqual) return isText ? EqualText(field, value, firstMonth) : EqualNumber(segment, value);
    const bool isUpper = role == RoleTo;
    return isText ? RangeText(field, value, isUpper, firstMonth) : RangeNumber(segment, value, isUpper);
}

// The bytes of the key's first segments, as a value that begins with them.
KeyValue Beginning(const KeyLayout &key, const std::vector<std::string> &segments)
{
    KeyValue value;
    for (size_t i = 0; i < key.Segments.size(); ++i) {
        const KeySegment &segment = key.Segments[i];
        std::string bytes(segment.Length, '\0');
        // The lowest number with a sign is the one whose highest bit alone is set.
        if (segment.Type == KeyType::Integer) bytes.back() = '\x80';
        if (i < segments.size()) {
            bytes.replace(0, segments[i].size(), segments[i]);
            value.Given.push_back(static_cast<uint16_t>(segments[i].size()));
        }
        value.Bytes += bytes;
    }
    return value;
}

} // namespace

bool NeedsFirstMonth(const TableLayout &layout, int key, const std::string &roles)
{
    if (key == asTheyLie) return false;
    const std::vector<KeySegment> &segments = layout.Keys[static_cast<size_t>(key)].Segments;
    const auto isDay = [&](const KeySegment &segment) {
        const FieldLayout *field = FieldOf(layout, segment);
        return field != nullptr && IsDayForm(field->Type);
    };
    return !roles.empty() && std::any_of(segments.begin(), segments.end(), isDay);
}

std::vector<KeyRange> RangesOf(const TableLayout &layout, int key, const std::string &roles,
                               const std::vector<Value> &values, int firstMonth)
{
    if (key == asTheyLie) return {{}};
    const KeyLayout &along = layout.Keys[static_cast<size_t>(key)];
    // Each way in which the first segments may be equal, and the bounds of what follows.
    std::vector<std::vector<std::string>> equal = {{}};
    std::optional<std::string> from;
    std::optional<std::string> to;
    size_t at = 0;
    bool isTold = true; // until a segment of which nothing is known
    for (size_t i = 0; i < roles.size(); ++i) {
        const Role role = static_cast<Role>(roles[i]);
        if (role != RoleEqual && role != RoleFrom && role != RoleTo) continue;
        const KeySegment &segment = along.Segments[at];
        const Bounds bounds = BoundsOf(*FieldOf(layout, segment), segment, role, values[i], firstMonth);
        if (bounds.IsNothing) return {};
        if (role == RoleFrom && isTold && bounds.At) from = bounds.At;
        if (role == RoleTo && isTold && bounds.At) to = bounds.At;
        if (role != RoleEqual) continue;
        isTold = isTold && !bounds.Equal.empty();
        ++at;
        if (!isTold) continue;
        std::vector<std::vector<std::string>> longer;
        for (const std::vector<std::string> &begun : equal) {
            for (const std::string &bytes : bounds.Equal) {
                longer.push_back(begun);
                longer.back().push_back(bytes);
                // What lies behind the end of a text comes before the next segment in the order.
                isTold = isTold && bytes.size() == segment.Length;
            }
        }
        equal = std::move(longer);
    }
    std::vector<KeyRange> ranges;
    for (const std::vector<std::string> &begun : equal) {
        KeyRange &range = ranges.emplace_back();
        const auto with = [&](const std::optional<std::string> &more) -> std::optional<KeyValue> {
            std::vector<std::string> segments = begun;
            if (more) segments.push_back(*more);
            if (segments.empty()) return std::nullopt;
            return Beginning(along, segments);
        };
        range.From = with(from);
        range.To = with(to);
        range.IsOne = isTold && !along.Duplicates && begun.size() == along.Segments.size();
    }
    return ranges;
}

} // namespace sql
