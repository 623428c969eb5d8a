// windows/entry_fields.h - how each field of a table is entered: by which kind of box, how large,
// and with what limit. Plain arithmetic, no widget.
#pragma once

namespace velnor {

/// More fields than these a data entry window doesn't show; the others keep their data.
inline constexpr int kMostEntryFields = 30;

enum class EntryKind {
    None,   ///< binary data: no control, and the field keeps what it has
    Check,  ///< a check box
    Line,
    Memo,  ///< a box of several lines
};

/// Sizes in twips; 0 leaves a size to the control.
struct EntryBox {
    EntryKind kind = EntryKind::Line;
    int width = 0;
    int height = 0;
    int maxLength = 0;  ///< characters; 0: no limit
};

/// `type` is the engine's code of the field, `size` its size in characters.
EntryBox entryBox(int type, int size);

}  // namespace velnor
