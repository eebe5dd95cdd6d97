// Fourier transforms and images of complex numbers. OpenCV's transform is given floats, made of the
// bytes in the same run, and gives the whole spectrum, as ours does.
#include <memory>

#include "benchmarks/bench.h"
#include "ky/frequency.h"

namespace ky::bench {
namespace {

// The spectrum of a picture, and one to be written.
struct Spectra {
  KyImage<KyComplex64> a, out;
};
template <class Call>
auto OnSpectra(Call call) {
  return [call](Pictures& p) {
    const auto spectra = std::make_shared<Spectra>();
    for (KyImage<KyComplex64>* image : {&spectra->a, &spectra->out})
      image->SetSize(p.a.GetWidth(), p.a.GetHeight());
    ImgSlowDFT(&p.a, &spectra->a);
    return [&p, spectra, call] { call(*spectra, p); };
  };
}

#if KY_BENCH_OPENCV
// The same for OpenCV: the spectrum in work[0], results in work[1] to work[3] and out.
#define OPENCV_ON_SPECTRUM(...)                         \
  [](Pictures& pictures) {                              \
    Views& v = pictures.views;                          \
    cv::Mat floats;                                     \
    v.a.convertTo(floats, CV_32F);                      \
    cv::dft(floats, v.work[0], cv::DFT_COMPLEX_OUTPUT); \
    return [&v] { __VA_ARGS__; };                       \
  }
#else
#define OPENCV_ON_SPECTRUM(...) nullptr
#endif

const bool registered = Register({
    {"ImgSlowDFT, BW8", OnSpectra([](Spectra& s, Pictures& p) { ImgSlowDFT(&p.a, &s.out); }),
     OPENCV(v.a.convertTo(v.work[0], CV_32F);
            cv::dft(v.work[0], v.work[1], cv::DFT_COMPLEX_OUTPUT))},
    {"ImgSlowDFT, forward",
     OnSpectra([](Spectra& s, Pictures&) { ImgSlowDFT(&s.a, &s.out, IMG_DFT_FORWARD); }),
     OPENCV_ON_SPECTRUM(cv::dft(v.work[0], v.work[1]))},
    {"ImgSlowDFT, inverse",
     OnSpectra([](Spectra& s, Pictures&) { ImgSlowDFT(&s.a, &s.out, IMG_DFT_INVERSE); }),
     OPENCV_ON_SPECTRUM(cv::dft(v.work[0], v.work[1], cv::DFT_INVERSE | cv::DFT_SCALE))},
    {"ImgComplexModulus",
     OnSpectra([](Spectra& s, Pictures& p) { ImgComplexModulus(&s.a, &p.out); }),
     OPENCV_ON_SPECTRUM(
         cv::extractChannel(v.work[0], v.work[1], 0); cv::extractChannel(v.work[0], v.work[2], 1);
         cv::magnitude(v.work[1], v.work[2], v.work[3]); v.work[3].convertTo(v.out, CV_8U))},
    {"ImgComplexRescaledModulus",
     OnSpectra([](Spectra& s, Pictures& p) { ImgComplexRescaledModulus(&s.a, &p.out); })},
    {"ImgComplexRescaledModulus, logarithmic",
     OnSpectra([](Spectra& s, Pictures& p) { ImgComplexRescaledModulus(&s.a, &p.out, true); })},
    {"ImgComplexArgument",
     OnSpectra([](Spectra& s, Pictures& p) { ImgComplexArgument(&s.a, &p.out); })},
    {"ImgComplexReal", OnSpectra([](Spectra& s, Pictures& p) { ImgComplexReal(&s.a, &p.out); }),
     OPENCV_ON_SPECTRUM(cv::extractChannel(v.work[0], v.work[1], 0);
                        v.work[1].convertTo(v.out, CV_8U))},
    {"ImgComplexMultiply",
     OnSpectra([](Spectra& s, Pictures&) { ImgComplexMultiply(&s.a, &s.a, &s.out); }),
     OPENCV_ON_SPECTRUM(cv::mulSpectrums(v.work[0], v.work[0], v.work[1], 0))},
    {"ImgComplexDiscEnergy", OnSpectra([](Spectra& s, Pictures& p) {
       KyVector energies;
       energies.SetStructure(8, p.a.GetWidth() + p.a.GetHeight(), 1, 4);
       ImgComplexDiscEnergy(&s.a, &energies);
     })},
});

}  // namespace
}  // namespace ky::bench
