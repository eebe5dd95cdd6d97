// The files of all typed vectors: their bytes, and files that are not what they should be.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "ky/ky.h"

namespace {

using Bytes = std::vector<unsigned char>;

// A file name of this process that is free again at the end.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { std::remove(name_.c_str()); }
  const char* name() const { return name_.c_str(); }
  // As a new file: file systems write one that was cut to 0 to the disk when it is closed.
  const char* With(const Bytes& bytes) const {
    std::remove(name());
    std::ofstream(name_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    return name();
  }
  Bytes Content() const {
    std::ifstream file(name_, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }

 private:
  std::string name_ = testing::TempDir() + "ky_vector_" + std::to_string(getpid());
};

void ExpectTrace(const char* name) {
  ASSERT_GT(KyGetTraceCount(), 0);
  EXPECT_STREQ(KyGetTrace(KyGetTraceCount() - 1), name);
}

// The elements' bytes as files hold them.
template <class T>
Bytes BodyOf(const KyVectorTemplate<T>& v) {
  Bytes bytes(v.GetNumElements() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), v.GetDataPtr(), bytes.size());
  return bytes;
}

// Saves two elements and expects `golden`; loads it back; then loads everything that is nearly it.
template <class T>
void CheckFiles(const T& first, const T& second, const Bytes& golden) {
  constexpr std::size_t kHeader = 4, kBody = 8;
  KyVectorTemplate<T> saved, loaded;
  EXPECT_EQ(sizeof(T) * 2 + kBody, golden.size());
  saved.AddElement(first);
  saved.AddElement(second);
  TemporaryFile file;
  ASSERT_EQ(saved.Save(file.name()), KY_OK);
  EXPECT_EQ(file.Content(), golden);
  ASSERT_EQ(loaded.Load(file.name()), KY_OK);
  EXPECT_EQ(loaded.GetMaxElements(), 2u);
  EXPECT_EQ(BodyOf(loaded), BodyOf(saved));

  // Serialize is the same without the first four bytes, on any stream.
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* stream = open_memstream(&text, &size);
  EXPECT_EQ(saved.Serialize(stream, 1, 1), KY_OK);
  std::fclose(stream);
  EXPECT_EQ(Bytes(text, text + size), Bytes(golden.begin() + kHeader, golden.end()));
  loaded.SetMaxElements(0);
  stream = fmemopen(text, size, "rb");
  EXPECT_EQ(loaded.Serialize(stream, 0, 1), KY_OK);
  std::fclose(stream);
  std::free(text);
  EXPECT_EQ(BodyOf(loaded), BodyOf(saved));

  for (std::size_t length = 0; length < golden.size(); ++length) {
    SCOPED_TRACE(length);
    KyVectorTemplate<T> v;
    v.AddElement(second);
    EXPECT_EQ(v.Load(file.With(Bytes(golden.begin(), golden.begin() + length))),
              KY_ERROR_FILE_READ);
    ExpectTrace("KyVector::Load");
    // Before the elements nothing changes; then those that are there have been read, and the vector
    // has the number that the file announces.
    if (length < kBody) {
      EXPECT_EQ(BodyOf(v), Bytes(golden.end() - sizeof(T), golden.end()));
    } else {
      const std::size_t whole = (length - kBody) / sizeof(T) * sizeof(T);
      Bytes expected(golden.begin() + kBody, golden.begin() + kBody + whole);
      expected.resize(2 * sizeof(T), 0);
      EXPECT_EQ(BodyOf(v), expected);
    }
  }
  for (std::size_t at = 0; at < kHeader; ++at) {
    for (int change = 1; change < 256; ++change) {
      Bytes wrong = golden;
      wrong[at] = static_cast<unsigned char>(wrong[at] ^ change);
      EXPECT_EQ(loaded.Load(file.With(wrong)), KY_ERROR_FILE_FORMAT);
      ExpectTrace("KyVector::Load");
    }
  }
  EXPECT_EQ(BodyOf(loaded), BodyOf(saved));
}

TEST(VectorFiles, BytesOfEveryElementType) {
  CheckFiles<KyBW8>(7, 255, {'Q', 1, 1, 0x51, 2, 0, 0, 0, 7, 255});
  CheckFiles<KyBW16>(7, 0xABCD, {'Q', 2, 1, 0x52, 2, 0, 0, 0, 7, 0, 0xCD, 0xAB});
  CheckFiles<KyC24>({1, 2, 3}, {4, 5, 6}, {'Q', 3, 1, 0x53, 2, 0, 0, 0, 1, 2, 3, 4, 5, 6});
  CheckFiles<unsigned int>(1, 0x89ABCDEF,
                           {'Q', 255, 255, 0x51, 2, 0, 0, 0, 1, 0, 0, 0, 0xEF, 0xCD, 0xAB, 0x89});
  CheckFiles<KyPath>({1, -2}, {300, 4},
                     {'Q', 6, 1, 0x56, 2, 0, 0, 0, 1, 0, 0xFE, 0xFF, 0x2C, 1, 4, 0});
  CheckFiles<KyBW8Path>({1, -2, 9}, {3, 4, 5, 6},
                        {'Q', 7, 1, 0x57, 2, 0, 0, 0, 1, 0, 0xFE, 0xFF, 9, 0, 3, 0, 4, 0, 5, 6});
  CheckFiles<KyC24Path>(
      {1, -2, {7, 8, 9}}, {3, 4, {5, 6, 7}, 8},
      {'Q', 8, 1, 0x58, 2, 0, 0, 0, 1, 0, 0xFE, 0xFF, 7, 8, 9, 0, 3, 0, 4, 0, 5, 6, 7, 8});
  CheckFiles<KyPeak>(
      {1, 2, 1.5f, 100, 200}, {3, 4, -2.0f, -1, -2},
      {'Q', 9, 1,    0x59, 2,   0, 0, 0,    1,    0,    0,    0,    2,    0,    0,    0,
       0,   0, 0xC0, 0x3F, 100, 0, 0, 0,    200,  0,    0,    0,    3,    0,    0,    0,
       4,   0, 0,    0,    0,   0, 0, 0xC0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF});
  CheckFiles<KyRun>({1, 2, 3}, {-1, 0, 5},
                    {'Q', 10, 1, 0x5A, 2,    0,    0,    0,    1, 0, 0, 0, 2, 0, 0, 0,
                     3,   0,  0, 0,    0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 5, 0, 0, 0});
  CheckFiles<float>(1.5f, -2.0f, {'Q', 12, 1, 0x5C, 2, 0, 0, 0, 0, 0, 0xC0, 0x3F, 0, 0, 0, 0xC0});
  CheckFiles<KyPosition>({1.5f, -2.0f}, {0.0f, 1.0f},
                         {'Q', 13, 1, 0x5D, 2, 0, 0, 0, 0, 0, 0xC0, 0x3F,
                          0,   0,  0, 0xC0, 0, 0, 0, 0, 0, 0, 0x80, 0x3F});
  CheckFiles<KyEdge>({-2.0f, 1.5f}, {1.0f, 0.0f},
                     {'Q', 14, 1,    0x5E, 2, 0, 0,    0,    0, 0, 0, 0xC0,
                      0,   0,  0xC0, 0x3F, 0, 0, 0x80, 0x3F, 0, 0, 0, 0});
  CheckFiles<KyEdgePoint>(
      {1.5f, -2.0f, 1.0f, 7}, {0.0f, 1.0f, -2.0f, -1},
      {'Q', 15, 1, 0x5F, 2, 0, 0, 0, 0, 0, 0xC0, 0x3F, 0, 0, 0, 0xC0, 0,    0,    0x80, 0x3F,
       7,   0,  0, 0,    0, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0, 0, 0xC0, 0xFF, 0xFF, 0xFF, 0xFF});
}

// A count proves nothing: neither a file nor a stream of unknown length makes a vector allocate
// very much more than it holds.
TEST(VectorFiles, CountsThatAreNotTrue) {
  constexpr unsigned kHeld = 10000;
  Bytes bytes = {'Q', 2, 1, 0x52, 0xFF, 0xFF, 0xFF, 0xFF};
  for (unsigned i = 0; i < 2 * kHeld + 1; ++i) bytes.push_back(static_cast<unsigned char>(i % 251));
  const Bytes body(bytes.begin() + 8, bytes.end() - 1);
  TemporaryFile file;
  KyBW16Vector v;
  EXPECT_EQ(v.Load(file.With(bytes)), KY_ERROR_FILE_READ);
  EXPECT_EQ(BodyOf(v), body);
  EXPECT_EQ(v.GetMaxElements(), kHeld);
  std::FILE* const stream = fmemopen(bytes.data() + 4, bytes.size() - 4, "rb");
  EXPECT_EQ(v.Serialize(stream, 0, 1), KY_ERROR_FILE_READ);
  std::fclose(stream);
  EXPECT_EQ(BodyOf(v), body);
  EXPECT_LE(v.GetMaxElements(), 2 * kHeld);
}

TEST(VectorFiles, AnEmptyVectorHasAnEightByteFile) {
  TemporaryFile file;
  EXPECT_EQ(KyBW8HistogramVector(256).Save(file.name()), KY_OK);
  EXPECT_EQ(file.Content(), (Bytes{'Q', 255, 255, 0x51, 0, 0, 0, 0}));
  KyBW32Vector v(3, 1);
  EXPECT_EQ(v.Load(file.name()), KY_OK);
  EXPECT_EQ(v.GetNumElements() + v.GetMaxElements(), 0u);
}

TEST(VectorFiles, FilesThatCannotBeUsed) {
  TemporaryFile file;
  KyPathVector v;
  v.AddElement({1, 2});
  const std::string folder = testing::TempDir();
  const std::string nowhere = folder + "no such folder/file";
  for (const char* name : {static_cast<const char*>(nullptr), "", nowhere.c_str()}) {
    EXPECT_EQ(v.Save(name), KY_ERROR_FILE_OPEN);
    ExpectTrace("KyVector::Save");
    EXPECT_EQ(v.Load(name), KY_ERROR_FILE_OPEN);
    ExpectTrace("KyVector::Load");
  }
  EXPECT_EQ(v.Save(folder.c_str()), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(v.Load(folder.c_str()), KY_ERROR_FILE_READ);
  EXPECT_EQ(v.Load("/dev/null"), KY_ERROR_FILE_READ);
  EXPECT_EQ(v.Serialize(nullptr, 0, 1), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(v.Serialize(nullptr, 1, 1), KY_ERROR_FILE_OPEN);
  // Nobody is, or will be, at the other end of a pipe.
  const std::string pipe = file.name() + std::string(".pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const int peer : {-1, open(pipe.c_str(), O_RDWR | O_NONBLOCK)}) {
    EXPECT_EQ(v.Save(pipe.c_str()), KY_ERROR_FILE_OPEN);
    EXPECT_EQ(v.Load(pipe.c_str()), KY_ERROR_FILE_OPEN);
    close(peer);
  }
  std::remove(pipe.c_str());
  // What fits the stream's buffer fails when it is closed, more when it is written.
  EXPECT_EQ(v.Save("/dev/full"), KY_ERROR_FILE_CLOSE);
  ExpectTrace("KyVector::Save");
  EXPECT_EQ(KyBW8Vector(1000000).Save("/dev/full"), KY_ERROR_FILE_WRITE);
  EXPECT_EQ(v[0], (KyPath{1, 2}));
}

TEST(VectorFiles, TheClosedFlagIsNotInTheFile) {
  TemporaryFile file;
  KyBW8PathVector closed(4), open, taker;
  EXPECT_EQ(closed.GetNumElements(), 0u);
  EXPECT_EQ(closed.GetMaxElements(), 4u);
  EXPECT_EQ(open.GetMaxElements(), 0u);
  EXPECT_EQ(closed.GetClosed(), 0);
  closed.SetClosed(5);
  closed.AddElement({1, 2, 3});
  ASSERT_EQ(closed.Save(file.name()), KY_OK);
  ASSERT_EQ(open.Load(file.name()), KY_OK);
  EXPECT_EQ(open.GetClosed(), 0);
  taker = closed;
  EXPECT_EQ(taker.GetClosed(), 5);
  EXPECT_EQ(taker[0], (KyBW8Path{1, 2, 3}));
  open = std::move(taker);
  EXPECT_EQ(open.GetClosed(), 5);
}

TEST(HistogramVector, ClearsTheBinsInUse) {
  KyBW8HistogramVector h(256);
  EXPECT_EQ(h.GetNumElements(), 0u);
  EXPECT_EQ(h.GetMaxElements(), 256u);
  h.Clear();
  h.SetNumElements(3);
  h[0] = h[2] = 9;
  h.SetNumElements(2);
  h.Clear();
  EXPECT_EQ(h.GetNumElements(), 2u);
  h.SetNumElements(3);
  EXPECT_EQ(h[0], 0u);
  EXPECT_EQ(h[2], 9u);
}

}  // namespace
