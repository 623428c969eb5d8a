// access/formats/jet/text_collation.h - the key bytes of text: a wrong key hides records without
// any error, so every answer says whether it is known for sure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/jet/jet_format.h"
#include "access/storage/code_page.h"

namespace velnor::jet {

/// Key bytes of one text are appended here; the builder reuses it from key to key.
using KeyBytes = std::vector<std::uint8_t>;

/// Text of at most 255 characters counts; blanks at its end don't.
class TextCollation {
public:
    /// `codePage` is the one of the stored bytes, for Jet 3 only.
    TextCollation(bool jet3, SortOrder order, const CodePage* codePage);

    /// Appends flag byte, weights and end of an ascending or descending column. False when the
    /// order of this text is not known for sure; the bytes are then a good guess for searching, not
    /// for writing.
    bool append(std::string_view utf8, bool descending, KeyBytes& key);

    /// The order is General, or known to sort everything as General does.
    bool general() const { return kind_ == Kind::General; }

private:
    enum class Kind : std::uint8_t {
        General,   // every text is sure
        Tailored,  // only texts of safe characters are
        Unknown,   // none is
    };
    bool appendJet3(std::string_view utf8, KeyBytes& key);
    bool appendJet4(std::string_view utf8, KeyBytes& key);
    bool appendUnit(char16_t unit, KeyBytes& key);

    bool jet3_;
    Kind kind_;
    const CodePage* codePage_;
    std::string_view unsafe_;  // ASCII letters that a tailored order may move
    std::string stored_;       // Jet 3: the text in the code page
    KeyBytes secondaries_;     // Jet 4: one a weight
    KeyBytes records_;         // Jet 4: hyphens and their kin
};

}  // namespace velnor::jet
