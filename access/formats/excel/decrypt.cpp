#include "access/formats/excel/decrypt.h"

#include <algorithm>
#include <optional>

#include "access/formats/excel/digest.h"
#include "access/storage/code_page.h"

namespace velnor::excel {
namespace {

/// Workbooks whose structure alone is protected are encrypted with it, and open without a question.
constexpr std::string_view kDefaultPassword = "VelvetSweatshop";
constexpr std::size_t kBlock = 1024;
constexpr int kFirstRecords = 20;     // FILEPASS stands among them
constexpr std::size_t kPlainKey = 5;  // 40 bits

/// The key of the 40-bit method, made of password and salt.
class BlockKeys {
public:
    BlockKeys(std::string_view password, Bytes salt)
    {
        std::string wide;
        utf8ToUtf16le(password, wide);
        const Digest hashed =
            md5({reinterpret_cast<const std::uint8_t*>(wide.data()), wide.size()});
        std::vector<std::uint8_t> mixed;
        for (int i = 0; i < 16; ++i) {
            mixed.insert(mixed.end(), hashed.begin(), hashed.begin() + kPlainKey);
            mixed.insert(mixed.end(), salt.begin(), salt.end());
        }
        key_ = md5(mixed);
    }
    Rc4 block(std::uint32_t number) const
    {
        std::uint8_t seed[kPlainKey + 4];
        std::copy_n(key_.begin(), kPlainKey, seed);
        storeLE(seed + kPlainKey, number);
        return Rc4(md5(seed));
    }

private:
    Digest key_;
};

bool fits(const BlockKeys& keys, Bytes filePass)
{
    Rc4 cipher = keys.block(0);
    Digest verifier, hash;
    for (std::size_t i = 0; i < verifier.size(); ++i)
        verifier[i] = static_cast<std::uint8_t>(filePass[22 + i] ^ cipher.next());
    for (std::size_t i = 0; i < hash.size(); ++i)
        hash[i] = static_cast<std::uint8_t>(filePass[38 + i] ^ cipher.next());
    return md5(verifier) == hash;
}

bool staysPlain(std::uint16_t type)
{
    switch (type) {
    case rec::kFilePass:
    case rec::kInterfaceHdr:
    case 0x0194:  // USREXCL
    case 0x0195:  // FILELOCK
    case 0x0196:  // RRDINFO
    case 0x0138:  // RRDHEAD
        return true;
    default:
        return isBof(type);
    }
}

/// The key stream by position, block after block.
class KeyStream {
public:
    explicit KeyStream(const BlockKeys& keys) : keys_(keys), cipher_(keys.block(0)) {}
    std::uint8_t at(std::size_t position)
    {
        if (position / kBlock != block_) {
            block_ = position / kBlock;
            cipher_ = keys_.block(static_cast<std::uint32_t>(block_));
            next_ = block_ * kBlock;
        }
        for (; next_ < position; ++next_)
            cipher_.next();
        ++next_;
        return cipher_.next();
    }

private:
    const BlockKeys& keys_;
    Rc4 cipher_;
    std::size_t block_ = 0;
    std::size_t next_ = 0;
};

void decipher(std::vector<std::uint8_t>& stream, const BlockKeys& keys)
{
    KeyStream key(keys);
    for (std::size_t at = 0; at + 4 <= stream.size();) {
        const auto type = loadLE<std::uint16_t>(stream.data() + at);
        const std::size_t length = loadLE<std::uint16_t>(stream.data() + at + 2);
        const std::size_t end = std::min(at + 4 + length, stream.size());
        if (!staysPlain(type))  // the position of a sheet stays plain, too
            for (std::size_t i = at + 4 + (type == rec::kBoundSheet ? 4 : 0); i < end; ++i)
                stream[i] ^= key.at(i);
        at = at + 4 + length;
    }
}

std::optional<std::vector<std::uint8_t>> filePassOf(Bytes stream)
{
    Record record;
    RecordReader reader(stream);
    for (int i = 0; i < kFirstRecords && reader.next(record); ++i)
        if (record.type == rec::kFilePass)
            return std::vector<std::uint8_t>(record.data.begin(), record.data.end());
    return std::nullopt;
}

}  // namespace

Unlocking unlock(std::vector<std::uint8_t>& stream, std::string_view password)
{
    const auto filePass = filePassOf(stream);
    if (!filePass)
        return Unlocking::NotEncrypted;
    static constexpr std::uint8_t kMethod[] = {1, 0, 1, 0, 1, 0};
    if (filePass->size() != 54 ||
        !std::equal(std::begin(kMethod), std::end(kMethod), filePass->begin()))
        return Unlocking::UnknownMethod;
    const BlockKeys keys(password.empty() ? kDefaultPassword : password,
                         Bytes(*filePass).subspan(6, 16));
    if (!fits(keys, *filePass))
        return Unlocking::WrongPassword;
    decipher(stream, keys);
    return Unlocking::Done;
}

}  // namespace velnor::excel
