#include "fuzz_input.h"
#include "platform/posix/text_files.h"
#include "platform/scratch_folder.h"
#include "text/code_page.h"

using namespace dravenna;

namespace {

// The text decoded in two pieces, cut at `cut`.
Text decodeCut(const CodePage& page, std::string_view bytes, std::size_t cut) {
  const std::string_view first = bytes.substr(0, cut);
  const std::size_t tail = page.incompleteTail(first);
  require(tail <= cut, "the tail is longer than the chunk");
  Text text = page.decode(first.substr(0, cut - tail));
  page.decode(bytes.substr(cut - tail), text);
  return text;
}

}  // namespace

// Every byte comes back, wherever the file is cut into chunks.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const CodePagePtr page = fuzzCodePage(input.digit());
  const std::size_t mostRead = 1 + input.digit() % 64;
  const std::string bytes(input.rest());
  const Text text = page->decode(bytes);
  std::string back;
  require(page->encode(text, back) == std::string::npos && back == bytes, "decode and encode");
  require(!page->isSingleByte() || text.size() == bytes.size(), "offsets of a single-byte page");
  require(page->countUndefined(bytes) <= bytes.size(), "undefined bytes");
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    require(decodeCut(*page, bytes, cut) == text, "decoding in chunks");
  }

  static const ScratchFolder folder;
  ShortReads calls;
  calls.mostRead = mostRead;
  folder.put("file", bytes);
  const auto files = posix::makeTextFiles(page, calls);
  if (!bytes.empty()) require(files->OpenTextFile(folder.path("file"))->ReadAll() == text, "ReadAll");
  const auto writer = files->CreateTextFile(folder.path("copy"), Writing::Replace);
  writer->Write(text);
  writer->Close();
  require(folder.get("copy") == bytes, "write");

  // Any characters: what is taken must come back as bytes; what is refused is refused at its place.
  Text any;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    any.push_back(
        static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) << 8 | static_cast<unsigned char>(bytes[at + 1])));
  }
  std::string out;
  const std::size_t bad = page->encode(any, out);
  std::string before;
  require(bad == std::string::npos || (page->encode(any.substr(0, bad), before) == std::string::npos && before == out),
          "what stands before a refused character");
  std::string again;
  require(page->encode(page->decode(out), again) == std::string::npos && again == out, "encode and decode");
  return 0;
}
