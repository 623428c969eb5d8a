#include "access/formats/xbase/dbf_format.h"

#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr HeaderShape kShape{.firstDescriptor = 32,
                             .descriptorSize = 32,
                             .nameSize = 11,
                             .typeAt = 11,
                             .lengthAt = 16,
                             .decimalsAt = 17,
                             .flagsAt = 0,
                             .autonumberAt = 0,
                             .stepAt = 0,
                             .languageNameAt = 0,
                             .productionIndexAt = 31,
                             .wideTexts = true};

constexpr HeaderShape kVisualShape{.firstDescriptor = 32,
                                   .descriptorSize = 32,
                                   .nameSize = 11,
                                   .typeAt = 11,
                                   .lengthAt = 16,
                                   .decimalsAt = 17,
                                   .flagsAt = 18,
                                   .autonumberAt = 19,
                                   .stepAt = 23,
                                   .languageNameAt = 0,
                                   .productionIndexAt = 0,
                                   .wideTexts = true};

constexpr HeaderShape kShape7{.firstDescriptor = 68,
                              .descriptorSize = 48,
                              .nameSize = 32,
                              .typeAt = 32,
                              .lengthAt = 33,
                              .decimalsAt = 34,
                              .flagsAt = 0,
                              .autonumberAt = 42,
                              .stepAt = 0,
                              .languageNameAt = 32,
                              .productionIndexAt = 37,
                              .wideTexts = false};

constexpr HeaderShape kShapeII{.firstDescriptor = 8,
                               .descriptorSize = 16,
                               .nameSize = 11,
                               .typeAt = 11,
                               .lengthAt = 12,
                               .decimalsAt = 15,
                               .flagsAt = 0,
                               .autonumberAt = 0,
                               .stepAt = 0,
                               .languageNameAt = 0,
                               .productionIndexAt = 0,
                               .wideTexts = false};

constexpr DbfFormat plain(std::string_view words, MemoForm memo)
{
    return {.words = words,
            .shape = &kShape,
            .memo = memo,
            .fox = false,
            .visualFox = false,
            .level7 = false,
            .two = false,
            .fallbackCodePage = 437};
}

constexpr DbfFormat visual(std::string_view words)
{
    return {.words = words,
            .shape = &kVisualShape,
            .memo = MemoForm::Fpt,
            .fox = true,
            .visualFox = true,
            .level7 = false,
            .two = false,
            .fallbackCodePage = 1252};
}

constexpr DbfFormat seven(std::string_view words)
{
    return {.words = words,
            .shape = &kShape7,
            .memo = MemoForm::DbtIV,
            .fox = false,
            .visualFox = false,
            .level7 = true,
            .two = false,
            .fallbackCodePage = 437};
}

constexpr DbfFormat kTwo{.words = "dBASE II",
                         .shape = &kShapeII,
                         .memo = MemoForm::None,
                         .fox = false,
                         .visualFox = false,
                         .level7 = false,
                         .two = true,
                         .fallbackCodePage = 437};
constexpr DbfFormat kPlain = plain("dBASE III, IV or 5, without memo", MemoForm::DbtIII);
constexpr DbfFormat kThreeMemo = plain("dBASE III with memo", MemoForm::DbtIII);
constexpr DbfFormat kFourMemo = plain("dBASE IV or 5 with memo", MemoForm::DbtIV);
constexpr DbfFormat kFourSql = plain("dBASE IV SQL table", MemoForm::DbtIV);
constexpr DbfFormat kSmt = plain("Clipper with SMT memo", MemoForm::Unknown);
constexpr DbfFormat kFoxBase = plain("FoxBASE with memo", MemoForm::DbtIII);
constexpr DbfFormat kFoxMemo = [] {
    DbfFormat f = plain("FoxPro 2 with memo", MemoForm::Fpt);
    f.fox = true;
    return f;
}();
constexpr DbfFormat kVisual = visual("Visual FoxPro");
constexpr DbfFormat kVisualAuto = visual("Visual FoxPro with autoincrement");
constexpr DbfFormat kVisualVar = visual("Visual FoxPro with Varchar, Varbinary or Blob");
constexpr DbfFormat kSeven = seven("dBASE level 7, without memo");
constexpr DbfFormat kSevenMemo = seven("dBASE level 7 with memo");

constexpr NewTableForm dbase(std::string_view word, std::uint8_t memoVersion, MemoForm memo,
                             bool binary, int maxFields, int maxRecord, int numberWidth)
{
    return {.connectWord = word,
            .plainVersion = 0x03,
            .memoVersion = memoVersion,
            .autonumberVersion = 0x03,
            .memo = memo,
            .fox = false,
            .visualFox = false,
            .binaryFields = binary,
            .languageMark = 0x1B,
            .codePage = 437,
            .maxFields = maxFields,
            .maxRecordBytes = maxRecord,
            .maxNumberWidth = numberWidth};
}

constexpr NewTableForm foxpro(std::string_view word, bool isVisual)
{
    return {.connectWord = word,
            .plainVersion = static_cast<std::uint8_t>(isVisual ? 0x30 : 0x03),
            .memoVersion = static_cast<std::uint8_t>(isVisual ? 0x30 : 0xF5),
            .autonumberVersion = static_cast<std::uint8_t>(isVisual ? 0x31 : 0x03),
            .memo = MemoForm::Fpt,
            .fox = true,
            .visualFox = isVisual,
            .binaryFields = true,
            .languageMark = 0x03,
            .codePage = 1252,
            .maxFields = 255,
            .maxRecordBytes = 65500,
            .maxNumberWidth = 20};
}

constexpr NewTableForm kForms[] = {
    dbase("dBASE III;", 0x83, MemoForm::DbtIII, false, 128, 4000, 19),
    dbase("dBASE IV;", 0x8B, MemoForm::DbtIV, false, 255, 4000, 20),
    dbase("dBASE 5.0;", 0x8B, MemoForm::DbtIV, true, 255, 32767, 20),
    foxpro("FoxPro 2.0;", false),
    foxpro("FoxPro 2.5;", false),
    foxpro("FoxPro 2.6;", false),
    foxpro("FoxPro 3.0;", true),
};

}  // namespace

const DbfFormat* formatOfVersion(std::uint8_t version)
{
    switch (version) {
    case 0x02:
        return &kTwo;
    case 0x30:
        return &kVisual;
    case 0x31:
        return &kVisualAuto;
    case 0x32:
        return &kVisualVar;
    case 0xF5:
        return &kFoxMemo;
    case 0xFB:
        return &kFoxBase;
    case 0xE5:
    case 0xE6:
        return &kSmt;
    case 0x43:
    case 0x63:
    case 0x7B:
    case 0xCB:
    case 0x8E:
        return &kFourSql;
    default:
        break;
    }
    // The others are made of bits: level, form of the memo file, and whether there is one.
    const bool memo = version & 0x80, four = version & 0x08;
    switch (version & 7) {
    case 4:
        return memo ? &kSevenMemo : &kSeven;
    case 3:
    case 5:
        return four ? &kFourMemo : memo ? &kThreeMemo : &kPlain;
    default:
        return nullptr;
    }
}

const NewTableForm* formOfConnectWord(std::string_view word)
{
    for (const NewTableForm& form : kForms)
        if (paths::sameName(form.connectWord, word))
            return &form;
    return nullptr;
}

}  // namespace velnor::xbase
