// Conversions between pixel types, and from what cameras deliver.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// Any bytes are a packed frame.
template <class Image>
void Unpack(Pictures& p, KY_PACKED_FORMAT format, Image& out) {
  ImgUnpack(p.colorA.GetPixelPtr(0, 0), p.colorA.GetPitch(), format, &out);
}

const bool registered = Register({
    {"ImgConvert C24 to BW8", [](Pictures& p) { ImgConvert(&p.colorA, &p.out); },
     OPENCV(cv::cvtColor(v.colorA, v.out, cv::COLOR_RGB2GRAY))},
    {"ImgConvert BW8 to C24", [](Pictures& p) { ImgConvert(&p.a, &p.colorOut); },
     OPENCV(cv::cvtColor(v.a, v.colorOut, cv::COLOR_GRAY2RGB)), Limit::kFill, Pixel::kColor},
    {"ImgConvert BW8 to BW16", [](Pictures& p) { ImgConvert(&p.a, &p.deepOut); },
     OPENCV(v.a.convertTo(v.deepOut, CV_16U, 257)), Limit::kFill, Pixel::kDeep},
    {"ImgConvert BW16 to BW8", [](Pictures& p) { ImgConvert(&p.deepA, &p.out); },
     OPENCV(v.deepA.convertTo(v.out, CV_8U, 1 / 257.0))},
    {"ImgConvert BW16 to BW8, shift", [](Pictures& p) { ImgConvert(&p.deepA, &p.out, 4u); },
     OPENCV(v.deepA.convertTo(v.out, CV_8U, 1 / 16.0))},
    {"ImgConvert C16 to C24",
     [](Pictures& p) {
       KyImage<KyC16> packed;
       packed.Attach(reinterpret_cast<KyC16*>(p.deepA.GetPixelPtr(0, 0)), p.deepA.GetWidth(),
                     p.deepA.GetHeight(), p.deepA.GetPitch());
       auto shared = std::make_shared<KyImage<KyC16>>(std::move(packed));
       return [&p, shared] { ImgConvert(shared.get(), &p.colorOut); };
     },
     nullptr, Limit::kFill, Pixel::kColor},
    {"ImgConvertTo422", [](Pictures& p) { ImgConvertTo422(&p.colorA, &p.deepOut); }, nullptr,
     Limit::kFill, Pixel::kDeep},
    {"ImgConvertFrom422", [](Pictures& p) { ImgConvertFrom422(&p.deepA, &p.colorOut); },
     OPENCV(cv::Mat pairs(v.deepA.rows, v.deepA.cols, CV_8UC2, v.deepA.data, v.deepA.step);
            cv::cvtColor(pairs, v.colorOut, cv::COLOR_YUV2RGB_YUY2)),
     Limit::kFill, Pixel::kColor},
    {"ImgConvertBayer", [](Pictures& p) { ImgConvertBayer(&p.a, &p.colorOut, KY_BAYER_RG); },
     OPENCV(cv::cvtColor(v.a, v.colorOut, cv::COLOR_BayerBG2RGB)), Limit::kFill, Pixel::kColor},
    {"ImgUnpack Mono12p", [](Pictures& p) { Unpack(p, KY_PACKED_MONO12P, p.deepOut); }, nullptr,
     Limit::kCopy, Pixel::kDeep},
    {"ImgUnpack Mono10p", [](Pictures& p) { Unpack(p, KY_PACKED_MONO10P, p.deepOut); }, nullptr,
     Limit::kCopy, Pixel::kDeep},
    {"ImgUnpack Mono12 GigE", [](Pictures& p) { Unpack(p, KY_PACKED_MONO12_GIGE, p.deepOut); },
     nullptr, Limit::kCopy, Pixel::kDeep},
    {"ImgUnpack Mono12p to BW8", [](Pictures& p) { Unpack(p, KY_PACKED_MONO12P, p.out); }, nullptr,
     Limit::kCopy},
});

}  // namespace
}  // namespace ky::bench
