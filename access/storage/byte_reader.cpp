#include "access/storage/byte_reader.h"

#include <string>

namespace velnor {

void ByteReader::fail(std::size_t at) const
{
    throw EngineError(error_, std::string(what_) + " is damaged: it points to byte " +
                                  std::to_string(at) + " of " + std::to_string(bytes_.size()));
}

}  // namespace velnor
