// Tables, their fields, and the values that fields keep.
#include "tests/access/conformance/driver_conformance.h"

namespace velnor::test {

using ::testing::ElementsAre;

TEST_P(DriverConformance, everyTypeKeepsItsLimitsAndNull)
{
    std::vector<FieldDef> defs;
    std::size_t rows = 0;
    for (const FieldCase& field : format().fields) {
        defs.push_back(field.def);
        rows = std::max(rows, field.values.size());
    }
    makeTable(defs);
    {
        Recordset rs = records();
        for (std::size_t row = 0; row <= rows; ++row) {  // the last one is all Null
            rs.AddNew();
            for (std::size_t i = 0; i < defs.size(); ++i) {
                const FieldCase& field = format().fields[i];
                if (row < field.values.size())
                    rs.setValue(static_cast<int>(i), field.values[row].view());
                else if (i == 0 && !format().blankRecords)
                    rs.setValue(0, field.values[0].view());
            }
            rs.Update();
        }
    }
    reopen();
    Recordset rs = records();
    ASSERT_EQ(rs.fieldCount(), static_cast<int>(defs.size()));
    for (std::size_t row = 0; row <= rows; ++row, rs.MoveNext()) {
        ASSERT_FALSE(rs.Eof());
        for (std::size_t i = 0; i < defs.size(); ++i) {
            const FieldCase& field = format().fields[i];
            const std::string read = shown(rs.value(static_cast<int>(i)));
            if (row < field.values.size()) {
                EXPECT_EQ(read, shown(field.values[row].view())) << field.def.name;
            } else if (field.keepsNull && (i > 0 || format().blankRecords)) {
                EXPECT_EQ(read, "Null") << field.def.name;
            }
        }
    }
    EXPECT_TRUE(rs.Eof());
}

TEST_P(DriverConformance, editsReachEveryType)
{
    if (format().needsKey)
        return expectEditRefused();
    if (!format().edits)
        return expectEditRefused();
    std::vector<FieldDef> defs;
    for (const FieldCase& field : format().fields)
        defs.push_back(field.def);
    makeTable(defs);
    Recordset rs = records();
    rs.AddNew();
    rs.Update();
    rs.MoveFirst();
    for (const bool first : {true, false}) {
        rs.Edit();
        for (std::size_t i = 0; i < defs.size(); ++i) {
            const auto& values = format().fields[i].values;
            rs.setValue(static_cast<int>(i), (first ? values.front() : values.back()).view());
        }
        rs.Update();
        for (std::size_t i = 0; i < defs.size(); ++i) {
            const auto& values = format().fields[i].values;
            EXPECT_EQ(shown(rs.value(static_cast<int>(i))),
                      shown((first ? values.front() : values.back()).view()))
                << defs[i].name;
        }
    }
}

TEST_P(DriverConformance, theStructureReadsBackInOrder)
{
    std::vector<FieldDef> defs;
    for (const FieldCase& field : format().fields)
        defs.push_back(field.def);
    makeTable(defs);
    reopen();
    TableDef& table = db.TableDefs()[listed("notes")];
    EXPECT_EQ(table.Attributes(), 0u);
    EXPECT_EQ(table.RecordCount(), 0);
    ASSERT_EQ(table.Fields().Count(), static_cast<int>(defs.size()));
    for (int i = 0; i < table.Fields().Count(); ++i)
        EXPECT_EQ(table.Fields()[i].Name(), defs[static_cast<std::size_t>(i)].name);
}

TEST_P(DriverConformance, theLongestNamesAreKept)
{
    const std::string tableName(static_cast<std::size_t>(format().longestTable), 'T');
    const std::string fieldName(static_cast<std::size_t>(format().longestField), 'F');
    makeTable({fieldDef(fieldName, FieldType::Text, 5)}, tableName);
    reopen();
    EXPECT_EQ(db.TableDefs()[listed(tableName)].Fields()[fieldName].Name(), fieldName);
    TableDef table = db.CreateTableDef("X");
    if (format().folder && format().cutsNames) {
        EXPECT_EQ(table.CreateField(fieldName + "G", 10, 5).Name(), fieldName);
    } else {
        EXPECT_EQ(errorOf([&] { table.CreateField(fieldName + "G", 10, 5); }), 3008);
    }
}

TEST_P(DriverConformance, tablesComeAndGo)
{
    makeTable({fieldDef("A", FieldType::Text, 5)}, "ONE");
    makeTable({fieldDef("B", FieldType::Text, 5), fieldDef("M", FieldType::Memo)}, "TWO");
    EXPECT_EQ(errorOf([&] { makeTable({fieldDef("A", FieldType::Text, 5)}, "one"); }), 3010);
    db.TableDefs().Delete("ONE");
    reopen();
    EXPECT_FALSE(db.TableDefs().contains(listed("ONE")));
    EXPECT_TRUE(db.TableDefs().contains(listed("TWO")));
    EXPECT_EQ(errorOf([&] { db.OpenRecordset("ONE"); }), 3078);
    makeTable({fieldDef("C", FieldType::Text, 5)}, "ONE");
    EXPECT_EQ(db.OpenRecordset("ONE").Fields()[0].Name(), "C");
}

TEST_P(DriverConformance, memosOfEveryLengthAreKept)
{
    makeNotes();
    std::vector<int> lengths{0, 1, 64, 500, 512, 5000, 200'000};  // keyed tables sort them
    std::erase_if(lengths,
                  [&](int n) { return static_cast<std::size_t>(n) > format().longestMemo; });
    {
        Recordset rs = records();
        for (const int length : lengths) {
            std::string text;
            for (int i = 0; i < length; ++i)
                text += static_cast<char>('a' + i % 26);
            addNote(rs, length, "memo", text);
        }
    }
    reopen();
    Recordset rs = records();
    for (const int length : lengths) {
        const std::string_view text =
            rs.value(2).isNull() ? std::string_view{} : rs.value(2).asText();
        ASSERT_EQ(static_cast<int>(text.size()), length);
        const char last = static_cast<char>('a' + (length + 25) % 26);
        EXPECT_TRUE(length == 0 || text.back() == last);
        rs.MoveNext();
    }
}

TEST_P(DriverConformance, memosGrowAndShrink)
{
    if (!format().edits)
        return expectEditRefused();
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "first", "short");
        addNote(rs, 2, "second", std::string(memoLength(3000), 'b'));
        rs.MoveFirst();
        for (const std::size_t wanted : {70'000, 10, 900, 5'000}) {
            const std::size_t length = memoLength(wanted);
            rs.Edit();
            rs.setValue(2, ValueView::text(std::string(length, 'x')));
            rs.Update();
            ASSERT_EQ(rs.value(2).asText().size(), length);
        }
        rs.Edit();
        rs.setValue(2, ValueView::null());
        rs.Update();
        EXPECT_TRUE(rs.value(2).isNull());
    }
    reopen();
    EXPECT_THAT(column(2), ElementsAre("Null", std::string(memoLength(3000), 'b')));
}

TEST_P(DriverConformance, everyClassOfCharactersIsKept)
{
    makeNotes();
    {
        Recordset rs = records();
        int id = 0;
        for (const std::string& text : format().texts)
            addNote(rs, ++id, text, text);
    }
    reopen();
    EXPECT_EQ(column(1), format().texts);
    EXPECT_EQ(column(2), format().texts);
}

TEST_P(DriverConformance, fieldsAreAddedAndDroppedWithTheirRecordsKept)
{
    if (!format().changesFields)
        return expectFieldRefused();
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "one", "a note");
        addNote(rs, 2, "two");
    }
    TableDef& table = db.TableDefs()[kTable];
    table.Fields().Append(table.CreateField("CITY", 10, 20));
    {
        Recordset rs = records();
        rs.Edit();
        rs.setValue(3, ValueView::text("Rome"));
        rs.Update();
    }
    table.Fields().Delete("NAME");
    reopen();
    EXPECT_THAT(column(0), ElementsAre("1", "2"));
    EXPECT_THAT(column(1), ElementsAre("a note", "Null"));
    EXPECT_THAT(column(2), ElementsAre("Rome", keepsNullTexts() ? "Null" : ""));
}

}  // namespace velnor::test
