// access/formats/paradox/secondary_index.h - one secondary index: its X file, a table of entries in
// key order, and its Y file, the tree over that.
//
// An entry of a kept index: the indexed fields, all fields of the primary key, and the number of
// the block that held the record when the entry was written. That number is a hint: nobody corrects
// it when blocks are split. All but the hint is the entry's key, so entries are unique.
// An index that is not kept has instead the record's number, block and place in the block; any
// change of the table makes it stale.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/paradox/block_file.h"
#include "access/formats/paradox/key_order.h"
#include "access/formats/paradox/record_chain.h"
#include "access/formats/paradox/tree_file.h"
#include "access/storage/row_sorter.h"

namespace velnor::paradox {

class SecondaryIndex {
public:
    /// Opens the X file of `table`. 3274 when it is none, or not one of this table.
    SecondaryIndex(const FileHeader& table, std::string extension, PageFile& file,
                   std::string_view codePage);

    const std::string& extension() const { return extension_; }
    std::string treeExtension() const { return "Y" + extension_.substr(1); }
    FileHeader& header() { return header_; }
    const FileHeader& header() const { return header_; }
    PageFile& file() { return file_; }
    std::string name() const;
    /// The indexed fields as positions in the table, from 0.
    const std::vector<std::size_t>& fields() const { return fields_; }
    bool kept() const { return header_.isKept(); }
    bool unique() const { return header_.options & kUnique; }
    bool blindToCase() const { return header_.options & kBlindToCase; }
    bool descending() const { return descending_; }
    /// As old as the table.
    bool current() const;
    /// Why it cannot be kept right although it should be; empty when it can.
    const std::string& trouble() const { return trouble_; }

    /// Bytes of the indexed fields at the start of an entry, and of the whole key.
    std::size_t indexedLength() const { return indexedLength_; }
    std::size_t entryKeyLength() const { return header_.keyLength(); }
    std::size_t entryLength() const { return header_.recordSize; }
    /// Where the primary key stands in an entry of a kept index.
    const std::uint8_t* primaryKeyOf(const std::uint8_t* entry) const
    {
        return entry + indexedLength_;
    }
    std::uint32_t hintOf(const std::uint8_t* entry) const;
    /// Of an index that is not kept: the block and the byte in it.
    std::uint32_t looseBlockOf(const std::uint8_t* entry) const;
    std::uint32_t looseOffsetOf(const std::uint8_t* entry) const;

    /// The entry of a record that stands in `block`.
    void makeEntry(const std::uint8_t* record, std::uint32_t block, std::uint8_t* entry) const;
    /// The part of it for one field, into `to`.
    void makePart(std::size_t i, const std::uint8_t* value, std::uint8_t* to) const;
    const StoredField& tableField(std::size_t i) const { return table_.fields[fields_[i]]; }

    RecordChain& chain();
    /// Gets ready for changes: `tree` is its Y file.
    void openTree(PageFile& tree, std::string_view codePage);
    bool writable() const { return tree_ != nullptr; }
    bool hasRoom() { return chain().hasRoom() && tree_->hasRoom(); }
    /// An entry of another record with the same indexed part.
    bool hasTwin(const std::uint8_t* entry, const std::uint8_t* own);
    void insert(const std::uint8_t* entry);
    /// False when the entry is not there.
    bool remove(const std::uint8_t* entry);
    /// Replaces all entries by those of the table's records, which go through `sorter`; `relieve`
    /// is called now and then. False when two records have the same values in a unique index: what
    /// was made must be taken back then.
    bool rebuild(RecordChain& records, RowSorter& sorter, const std::function<void()>& relieve);
    bool changed() const { return changed_; }
    void touch() { changed_ = true; }

    /// Writes entries, tree and stamps; the table's stamp has its new value.
    void store();
    std::size_t changedBytes() const;

private:
    void readFields();
    void refuseOther(const char* why) const;
    void clear();
    void turn(std::uint8_t* entry) const;

    const FileHeader& table_;
    std::string extension_;
    PageFile& file_;
    PageFile* treeFile_ = nullptr;
    FileHeader header_, treeHeader_;
    BlockFile blocks_;
    std::unique_ptr<BlockFile> treeBlocks_;
    std::unique_ptr<RecordChain> chain_;
    std::unique_ptr<TreeFile> tree_;
    std::vector<std::size_t> fields_;
    std::size_t indexedLength_ = 0;
    bool descending_ = false;
    std::string trouble_;
    UpperCase upper_;
    bool changed_ = false;
};

}  // namespace velnor::paradox
