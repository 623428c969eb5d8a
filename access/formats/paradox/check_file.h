// access/formats/paradox/check_file.h - checks of one file by itself: its header, its blocks, the
// order of its records, and a tree against the file that it is over.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "access/formats/paradox/block_file.h"
#include "access/formats/paradox/check_report.h"
#include "access/formats/paradox/record_chain.h"

namespace velnor::paradox {

class FileCheck {
public:
    /// 3274 when the file has no header of this format.
    FileCheck(std::string fileName, PageFile& pages, std::string_view codePage,
              CheckReport& report);

    const std::string& name() const { return name_; }
    const FileHeader& header() const { return header_; }
    BlockFile& blocks() { return blocks_; }

    void checkHeader();
    /// Walks both chains; what it finds is used by the others.
    void checkBlocks();
    /// Keys along the chain; without `byBytes` only equal neighbours are told.
    void checkOrder(std::size_t keyLength, const KeyOrder& order, bool unique);
    /// This file as the tree over `data`, whose blocks are checked. `link`: what its stamp must be.
    void checkTree(FileCheck& data, std::size_t keyLength, std::uint8_t link);

    struct ChainBlock {
        std::uint16_t number;
        std::uint16_t records;
    };
    const std::vector<ChainBlock>& chain() const { return chain_; }
    std::int64_t records() const { return records_; }
    /// The records of a block, good until the next call.
    const std::uint8_t* recordsOf(const ChainBlock& block)
    {
        return blocks_.block(block.number) + kBlockHead;
    }

    void fault(const std::string& text, const char* sort = nullptr)
    {
        report_.fault(name_, text, sort);
    }
    void note(const std::string& text, const char* sort = nullptr)
    {
        report_.note(name_, text, sort);
    }

private:
    struct Subtree {
        std::uint32_t records = 0;
        std::vector<std::uint8_t> firstKey;
        bool sound = false;
    };

    void compareHeader(const std::vector<std::uint8_t>& stored);
    void checkFields();
    void checkCounters(std::size_t freeBlocks);
    Subtree walkTree(FileCheck& data, std::uint32_t block, int level);
    void checkLeaf(FileCheck& data, const std::uint8_t* entry, std::uint32_t block,
                   std::uint32_t count);

    std::string name_;
    PageFile& pages_;
    FileHeader header_;
    BlockFile blocks_;
    CheckReport& report_;
    std::vector<ChainBlock> chain_;
    std::int64_t records_ = 0;
    std::size_t keyLength_ = 0, leaves_ = 0;
    std::vector<bool> met_;
};

}  // namespace velnor::paradox
