// Vectors of images: whose pixels they hold, and that no file can make them point anywhere.
#include "ky/image_vector.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ky/operators.h"

namespace {

using Images = KyVectorTemplate<KyImage<KyBW8>>;

// Reads the bytes as a file from its number of elements on: a real file, or a stream of which
// nobody knows how long it is.
KY_ERRORS Read(Images& images, const std::vector<unsigned char>& bytes, bool regular) {
  std::FILE* const stream =
      regular ? std::tmpfile()
              : fmemopen(const_cast<unsigned char*>(bytes.data()), bytes.size(), "rb");
  if (regular) {
    std::fwrite(bytes.data(), 1, bytes.size(), stream);
    std::rewind(stream);
  }
  const KY_ERRORS error = images.Serialize(stream, 0, 1);
  std::fclose(stream);
  return error;
}

// An image without pixels, whatever is done to it.
template <class T>
void ExpectHarmless(KyImage<T>& image) {
  EXPECT_EQ(image.GetPixelPtr(0, 0), nullptr);
  EXPECT_EQ(image.GetPitch(), 0);
  EXPECT_EQ(image.GetMaskOffsets(), nullptr);
  EXPECT_EQ(image.GetParent(), nullptr);
  EXPECT_EQ(image.GetPixelSize(), static_cast<int>(sizeof(T)));
  KyImage<T> other(4, 4);
  EXPECT_EQ(ImgOper(KY_OPER_COPY, &image, &other), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgOper(KY_OPER_COPY, &other, &image), KY_ERROR_NO_IMAGE);
  image.SetSize(4, 4);
  EXPECT_EQ(ImgOper(KY_OPER_COPY, &other, &image), KY_OK);
}

TEST(ImageVector, OwnsItsImages) {
  KyImage<KyBW8> image(5, 4);
  image.SetPixel(77, 4, 3);
  *static_cast<KyBW8*>(image.GetPixelPtr(4, 4)) = 78;  // in the spare row
  const void* const pixels = image.GetPixelPtr(0, 0);
  Images v;
  ASSERT_EQ(v.AddElement(std::move(image)), KY_OK);
  ASSERT_EQ(v.AddElementByRef(v[0]), KY_OK);
  ASSERT_EQ(v.AddElementByRef(v[1]), KY_OK);
  EXPECT_EQ(v.GetMaxElements(), 4u);
  EXPECT_EQ(v[0].GetPixelPtr(0, 0), pixels);
  EXPECT_NE(v[1].GetPixelPtr(0, 0), pixels);
  EXPECT_EQ(*static_cast<KyBW8*>(v[1].GetPixelPtr(4, 4)), 78);
  v[1].SetPixel(1, 4, 3);
  EXPECT_EQ(v[0].GetPixel(4, 3), 77);
  EXPECT_EQ(v[2].GetPixel(4, 3), 77);
  // Images dropped lose their pixels; those that come are empty.
  v.SetNumElements(1);
  v.SetNumElements(4);
  EXPECT_EQ(v[0].GetPixelPtr(0, 0), pixels);
  EXPECT_EQ(v[2].GetPixelPtr(0, 0), nullptr);
  Images w;
  w.AddElement(KyImage<KyBW8>(2, 2));
  const KyImage<KyBW8>& former = w[0];
  w = v;
  EXPECT_EQ(former.GetWidth(), 2);
  EXPECT_EQ(w[0].GetPixelPtr(0, 0), pixels);
}

TEST(ImageVector, CopiesOfForeignMemoryAreTheirOwn) {
  std::vector<KyBW8> frame(7 * 4);
  for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<KyBW8>(i);
  const KyMaskRun runs[] = {{8, 2}};
  KyImage<KyBW8> image;
  ASSERT_EQ(image.Attach(frame.data(), 5, 4, 7), KY_OK);
  ASSERT_EQ(image.SetMask(runs, 1, true), KY_OK);
  image.SetPlacement(1, 1, 3, 2);
  Images v;
  ASSERT_EQ(v.AddElementByRef(image), KY_OK);
  frame.assign(frame.size(), 0);
  EXPECT_EQ(v[0].GetWidth(), 3);
  EXPECT_EQ(v[0].GetPixel(2, 1), 2 * 7 + 3);
  EXPECT_EQ(v[0].GetPitch(), 7);  // the mask counts in it
  ASSERT_EQ(v[0].GetMaskCount(), 1u);
  EXPECT_EQ(v[0].GetMaskOffsets()->offset, 8);
  EXPECT_TRUE(v[0].IsMaskAbsolute());
}

// What stands in for an image that does not exist stays without pixels whatever is done to it, in
// any thread, and until the last destructor of a thread has run.
TEST(ImageVector, TheStandInNeverHasPixels) {
  Images v;
  KyImage<KyBW8>& none = v[9];
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  KyImage<KyBW8> image(3, 3);
  const KyMaskRun run = {0, 1};
  KyBW8 foreign[4] = {};
  none.SetSize(3, 3);
  EXPECT_EQ(KyGetError(), KY_ERROR_NOT_ENOUGH_MEMORY);
  none.SetSize(0, 0);
  EXPECT_EQ(KyGetError(), KY_OK);
  EXPECT_EQ(none.Attach(foreign, 2, 2, 2), KY_ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(none.CopyFrom(image), KY_ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(none.SetMask(&run, 1, false), KY_ERROR_NOT_ENOUGH_MEMORY);
  none.SetPlacement(1, 1, 2, 2);
  none.KyGenericROI::SetSize(2, 2);
  none.Restore(&image);
  none.ClearMask();
  none = std::move(image);
  EXPECT_EQ(image.GetWidth(), 3);
  EXPECT_EQ(none.GetWidth(), 0);
  EXPECT_EQ(none.GetPixelPtr(0, 0), nullptr);
  EXPECT_EQ(&v[5], &none);
  KyImage<KyBW8> taker = std::move(none);
  taker.SetSize(2, 2);
  EXPECT_NE(taker.GetPixelPtr(0, 0), nullptr);
  ASSERT_EQ(taker.SetMask(&run, 1, false), KY_OK);
  taker = std::move(none);
  EXPECT_EQ(taker.GetPixelPtr(0, 0), nullptr);
  EXPECT_EQ(none.GetMaskOffsets(), nullptr);
  KyImage<KyC24> color(2, 2);
  EXPECT_EQ(ImgOper(KY_OPER_COPY, &none, &image), KY_ERROR_NO_IMAGE);

  struct Late {
    Images* images = nullptr;
    ~Late() {
      for (int i = 0; images != nullptr && i < 9; ++i) (*images)[i].SetSize(i, i);
    }
  };
  const auto use = [&] {
    static thread_local Late late;
    late.images = &v;
    v[1].SetPlacement(1, 2, 3, 4);
  };
  std::thread one(use), other(use);
  one.join();
  other.join();
}

template <class T>
void CheckRoundTrip(unsigned char signature) {
  KyVectorTemplate<KyImage<T>> saved, loaded;
  saved.AddElement(KyImage<T>(6, 3));
  saved.AddElement(KyImage<T>());
  const std::string name = testing::TempDir() + "ky_images_" + std::to_string(getpid());
  ASSERT_EQ(saved.Save(name.c_str()), KY_OK);
  unsigned char bytes[300];
  std::FILE* const file = std::fopen(name.c_str(), "rb");
  EXPECT_EQ(std::fread(bytes, 1, sizeof bytes, file), 8u + 2 * 120);
  std::fclose(file);
  const unsigned char header[] = {
      'Q', signature, 1, static_cast<unsigned char>('Q' ^ signature ^ 1), 2, 0, 0, 0};
  EXPECT_EQ(std::memcmp(bytes, header, sizeof header), 0);
  EXPECT_EQ(std::memcmp(bytes + 8, static_cast<const void*>(saved.GetDataPtr()), 2 * 120), 0);
  ASSERT_EQ(loaded.Load(name.c_str()), KY_OK);
  std::remove(name.c_str());
  ASSERT_EQ(loaded.GetNumElements(), 2u);
  EXPECT_EQ(loaded[0].GetWidth(), 6);
  EXPECT_EQ(loaded[0].GetHeight(), 3);
  KyVectorTemplate<KyImage<T>> copies;
  EXPECT_EQ(copies.AddElementByRef(loaded[0]), KY_OK);
  EXPECT_EQ(copies[0].GetWidth(), 6);
  for (KyImage<T>& image : loaded) ExpectHarmless(image);
}

TEST(ImageVector, FilesHoldObjectsWithoutPixels) {
  CheckRoundTrip<KyBW8>(18);
  CheckRoundTrip<KyC24>(19);
}

TEST(ImageVector, ForeignBytesAreHarmless) {
  for (const bool regular : {true, false}) {
    for (const int fill : {0x00, 0x01, 0x41, 0x7F, 0x80, 0xFF}) {
      std::vector<unsigned char> bytes(4 + 3 * 120, static_cast<unsigned char>(fill));
      const unsigned int count = 3;
      std::memcpy(bytes.data(), &count, sizeof count);
      Images v;
      ASSERT_EQ(Read(v, bytes, regular), KY_OK);
      ASSERT_EQ(v.GetNumElements(), count);
      v.AddElementByRef(v[0]);  // also moves the others
      for (KyImage<KyBW8>& image : v) ExpectHarmless(image);
      ASSERT_EQ(Read(v, bytes, regular), KY_OK);  // and the rest is destroyed
    }
  }
}

TEST(ImageVector, ACountThatIsNotTrueBuildsFewImages) {
  std::vector<unsigned char> bytes(4 + 2 * 120 + 50, 0);
  for (const unsigned int count : {3u, 1000u, 0xFFFFFFFFu}) {
    std::memcpy(bytes.data(), &count, sizeof count);
    for (const bool regular : {true, false}) {
      Images v;
      EXPECT_EQ(Read(v, bytes, regular), KY_ERROR_FILE_READ);
      EXPECT_EQ(v.GetNumElements(), count <= 1000 ? count : 2u);
      for (KyImage<KyBW8>& image : v) ExpectHarmless(image);
    }
  }
}

}  // namespace
