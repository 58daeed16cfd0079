#include "PictureReader.h"

#include <array>
#include <string_view>

namespace tavinitf {
namespace {

struct Signature {
  std::string_view bytes;
  std::unique_ptr<PictureReader> (*make)(std::FILE* file);
};
using namespace std::string_view_literals;
constexpr std::array<Signature, 10> kSignatures = {{{"\x89PNG\r\n\x1a\n"sv, MakePngReader},
                                                    {"\xff\xd8\xff"sv, MakeJpegReader},
                                                    {"P2"sv, MakePnmReader},
                                                    {"P3"sv, MakePnmReader},
                                                    {"P5"sv, MakePnmReader},
                                                    {"P6"sv, MakePnmReader},
                                                    {"II*\0"sv, MakeTiffReader},
                                                    {"MM\0*"sv, MakeTiffReader},
                                                    {"II+\0"sv, MakeTiffReader},
                                                    {"MM\0+"sv, MakeTiffReader}}};

}  // namespace

std::unique_ptr<PictureReader> MakePictureReader(std::FILE* file) {
  std::array<char, 8> head{};
  const size_t size = std::fread(head.data(), 1, head.size(), file);
  std::rewind(file);
  const std::string_view start(head.data(), size);
  for (const Signature& signature : kSignatures) {
    if (start.starts_with(signature.bytes)) return signature.make(file);
  }
  return nullptr;
}

}  // namespace tavinitf
