// The fast kernels against simple references written from their definitions: byte-pair and
// line-end searches, checksums, the header block's end and the field search.
#include "clients/Delimiters.h"
#include "store/ByteSearch.h"
#include "store/Checksum.h"
#include "store/FieldSearch.h"
#include "store/MailMsg.h"
#include "tests/store/AtEachWidth.h"
#include "tests/support/Reference.h"
#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {
using Bytes = std::vector<unsigned char>;

Bytes randomBytes(std::mt19937 &random, size_t length, const std::string &alphabet) {
  Bytes bytes(length);
  for (unsigned char &byte : bytes)
    byte = static_cast<unsigned char>(alphabet[random() % alphabet.size()]);
  return bytes;
}

const unsigned char *bytesOf(const std::string &text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

// Every pattern's pair, over text made of the pattern's own bytes, from every start; the
// buffer ends where the search may read no further, so that a sanitizer sees a read past it.
TEST(FindPair, AgreesWithAPlaceByPlaceSearch) {
  atEachWidth([] {
    std::mt19937 random(3);
    const std::vector<std::string> patterns = {
        std::string(reinterpret_cast<const char *>(kEudoraDelimiter), sizeof kEudoraDelimiter),
        std::string(reinterpret_cast<const char *>(kPegasusDelimiter), sizeof kPegasusDelimiter),
        std::string(reinterpret_cast<const char *>(kInternetMailDelimiter), 4),
        "From",
        "x",
        "aa"};
    for (const std::string &pattern : patterns) {
      const BytePair pair = rarestPair(bytesOf(pattern), static_cast<uint32_t>(pattern.size()));
      const uint32_t reach = std::max(pair.rare, pair.other);
      for (int round = 0; round < 300; ++round) {
        const Bytes bytes = randomBytes(random, reach + 1 + random() % 300, pattern + "ab");
        const auto last = static_cast<uint32_t>(bytes.size() - 1 - reach);
        const uint32_t from = random() % (last + 2);
        uint32_t expected = kByteNotFound;
        for (uint32_t p = from; p <= last && expected == kByteNotFound; ++p)
          if (bytes[p + pair.rare] == pair.rareByte && bytes[p + pair.other] == pair.otherByte)
            expected = p;
        ASSERT_EQ(expected, findPair(bytes.data(), from, last, pair)) << pattern << " " << from;
      }
    }
  });
}

// One match in a run of other bytes, at every place of every length up to a few vector
// steps, searched from every start: the ends of the vector steps are where slips hide.
TEST(FindPair, FindsALoneMatchAtEveryPlace) {
  atEachWidth([] {
    const BytePair pair = rarestPair(kEudoraDelimiter, sizeof kEudoraDelimiter);
    const uint32_t reach = std::max(pair.rare, pair.other);
    for (uint32_t last = 0; last < 200; ++last) {
      for (uint32_t at = 0; at <= last + 1; ++at) {
        Bytes bytes(last + 1 + reach, 'a');
        if (at <= last) {
          bytes[at + pair.rare] = pair.rareByte;
          bytes[at + pair.other] = pair.otherByte;
        }
        for (uint32_t from = 0; from <= last; from += 1 + from / 8) {
          const uint32_t expected = at <= last && at >= from ? at : kByteNotFound;
          ASSERT_EQ(expected, findPair(bytes.data(), from, last, pair)) << last << " " << at;
        }
      }
    }
  });
}

TEST(FindLineEnd, AgreesWithAByteLoop) {
  atEachWidth([] {
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
      const Bytes bytes =
          randomBytes(random, 1 + random() % 100, round % 2 ? "abcdefgh\r" : "ab\n");
      const auto end = static_cast<uint32_t>(bytes.size());
      const uint32_t from = random() % (end + 1);
      uint32_t expected = from;
      while (expected < end && bytes[expected] != '\n' && bytes[expected] != '\r')
        ++expected;
      ASSERT_EQ(expected, findLineEnd(bytes.data(), from, end));
    }
  });
}

TEST(ChecksumKernels, CopyAndSumAgreeWithByteAtATimeAtEveryLengthAndAlignment) {
  // The reference's own documented values.
  EXPECT_EQ(0x04030404u, referenceChecksum(std::string("\x01\x02\x03\x04\x05\x06", 6)));
  EXPECT_EQ(0x64636261u, referenceChecksum("abcd"));
  atEachWidth([] {
    std::mt19937 random(9);
    const Bytes source = randomBytes(random, 5000,
                                     std::string("\x00\x01\x7f\x80\xff"
                                                 "abc",
                                                 8));
    for (size_t offset = 0; offset < 8; ++offset) {
      for (size_t length = 0; length + offset <= source.size(); length += length < 300 ? 1 : 977) {
        const unsigned char *start = source.data() + offset;
        const auto n = static_cast<uint32_t>(length);
        ASSERT_EQ(referenceChecksum(start, length), checksumBytes(start, n)) << length;
        Bytes target(length + 1, 0xEE);
        ASSERT_EQ(referenceChecksum(start, length), copyWithChecksum(target.data(), start, n));
        ASSERT_EQ(0, std::memcmp(target.data(), start, length));
        ASSERT_EQ(0xEE, target[length]) << "nothing is written behind the copy";
      }
    }
  });
  // A part turned by its offset joins the whole.
  std::mt19937 random(13);
  const Bytes bytes = randomBytes(random, 200, "abcdefghijklmnop\x01\xfe");
  const uint32_t whole = referenceChecksum(bytes.data(), bytes.size());
  for (uint32_t split = 0; split <= bytes.size(); ++split) {
    const uint32_t head = checksumBytes(bytes.data(), split);
    const uint32_t tail = checksumBytes(bytes.data() + split, 200 - split);
    ASSERT_EQ(whole, head ^ checksumAt(tail, split)) << split;
  }
}

// The range may end before the bytes do: what lies behind it must not count. (The places of
// the definition's own cases: MailMsg.)
TEST(HeaderLength, AgreesWithTheByteByByteScan) {
  const CMailMsg probe;
  atEachWidth([&] {
    std::mt19937 random(17);
    for (int round = 0; round < 20000; ++round) {
      const Bytes bytes =
          randomBytes(random, random() % 150, round % 3 ? "\r\na" : "abcdefghijklmnopqrstuv\r\n");
      const auto length = static_cast<uint32_t>(random() % (bytes.size() + 1));
      ASSERT_EQ(referenceHeaderLength(bytes.data(), length),
                probe.getHeaderLength(bytes.data(), length));
    }
  });
}

TEST(FieldSearch, AgreesWithAPlaceByPlaceSearchForEveryName) {
  atEachWidth([] {
    std::mt19937 random(19);
    const std::vector<std::vector<std::string>> nameSets = {
        {"\nDate:", "\nTo:", "\nFrom:", "\nSubject:", "\nCc:"},
        {"\nTo:", "\nto:", "\nT", "\nTo: long name that fits no block of these"},
        {"Subject:", "\nTo:", ":"}, // a first byte with case, and one without
        {"\na", "\nb", "\nc", "\nd", "\ne", "\nf", "\ng", "\nh", "\ni"}, // more than one pass takes
        {"\r", "\n", "\n\n"}};
    for (int round = 0; round < 4000; ++round) {
      const std::vector<std::string> &names = nameSets[round % nameSets.size()];
      Bytes block = randomBytes(random, random() % 120, "\n\r:Tt oOdaSubjectCc");
      if (round % 7 == 0 && !block.empty())
        block[random() % block.size()] = 0; // a zero byte is a difference like any other
      const auto searchLength =
          static_cast<uint32_t>(block.empty() ? 0 : random() % (block.size() + 1));
      std::vector<const char *> pointers;
      for (const std::string &name : names)
        pointers.push_back(name.c_str());
      std::vector<int32_t> indexes(names.size(), 7);
      findFields(pointers.data(), static_cast<int>(names.size()), block.data(), searchLength,
                 indexes.data());
      for (size_t k = 0; k < names.size(); ++k)
        ASSERT_EQ(referenceFieldStart(names[k], block.data(), searchLength), indexes[k]) << k;
    }
  });
}
} // namespace
