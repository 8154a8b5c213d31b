/// \file
/// \brief Colours: red, green, blue and opacity.
#ifndef QV_PLATFORM_SYSTEM_COLOR_H
#define QV_PLATFORM_SYSTEM_COLOR_H

#include <cstdint>

namespace QVSystem {

/// A colour of four channels, each 0 to 255: sRGB and alpha (255 is opaque).
class QVColor {
 public:
  /// Opaque black.
  constexpr QVColor() = default;
  constexpr QVColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                    std::uint8_t alpha = 255)
      : red_(red), green_(green), blue_(blue), alpha_(alpha) {}

  constexpr std::uint8_t GetR() const { return red_; }
  constexpr std::uint8_t GetG() const { return green_; }
  constexpr std::uint8_t GetB() const { return blue_; }
  constexpr std::uint8_t GetA() const { return alpha_; }

  friend constexpr bool operator==(const QVColor& a, const QVColor& b) {
    return a.red_ == b.red_ && a.green_ == b.green_ && a.blue_ == b.blue_ && a.alpha_ == b.alpha_;
  }
  friend constexpr bool operator!=(const QVColor& a, const QVColor& b) { return !(a == b); }

 private:
  std::uint8_t red_ = 0;
  std::uint8_t green_ = 0;
  std::uint8_t blue_ = 0;
  std::uint8_t alpha_ = 255;
};

/// The colour a share `t` of the way from `a` (t <= 0) to `b` (t >= 1), channel by channel.
constexpr QVColor QVMixColors(const QVColor& a, const QVColor& b, double t) {
  const double share = t > 0.0 ? (t < 1.0 ? t : 1.0) : 0.0;
  const auto mix = [share](double from, double to) {
    return static_cast<std::uint8_t>(from + (to - from) * share + 0.5);
  };
  return QVColor(mix(a.GetR(), b.GetR()), mix(a.GetG(), b.GetG()), mix(a.GetB(), b.GetB()),
                 mix(a.GetA(), b.GetA()));
}

constexpr QVColor QVBlack{0, 0, 0};
constexpr QVColor QVWhite{255, 255, 255};
constexpr QVColor QVRed{255, 0, 0};
constexpr QVColor QVGreen{0, 255, 0};
constexpr QVColor QVBlue{0, 0, 255};
constexpr QVColor QVGrey{128, 128, 128};
constexpr QVColor QVLightGrey{211, 211, 211};
constexpr QVColor QVDarkRed{139, 0, 0};
constexpr QVColor QVDarkGreen{0, 100, 0};
constexpr QVColor QVDarkBlue{0, 0, 139};

}  // namespace QVSystem

#endif  // QV_PLATFORM_SYSTEM_COLOR_H
