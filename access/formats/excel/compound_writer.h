// access/formats/excel/compound_writer.h - writes a container anew with one stream changed.
//
// All other streams and every entry of the directory keep their content, order and links; only
// where they lie changes. The new container is without gaps, and its streams share no sector, also
// where those of the old one did.
#pragma once

#include <functional>
#include <string_view>

#include "access/formats/excel/compound_file.h"

namespace velnor::excel {

/// Writes into `out` the container `old` with `size` bytes of `writeStream` as the content of
/// `entry`. `size` is at least 4096, so that the stream lies in normal sectors. 3049 when it gets
/// too large.
void writeCompound(File& out, CompoundFile& old, std::size_t entry, std::uint64_t size,
                   const std::function<void(StreamSink&)>& writeStream);

/// The same with a new container that holds nothing but the stream.
void writeNewCompound(File& out, std::string_view streamName, std::uint64_t size,
                      const std::function<void(StreamSink&)>& writeStream);

}  // namespace velnor::excel
