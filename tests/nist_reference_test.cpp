// The Statistical Reference Datasets of NIST (https://www.itl.nist.gov/div898/strd/), data and
// certified values: univariate summary statistics and linear regression.
#include <gmock/gmock.h>

#include <cmath>

#include "stats/api/data_vector_functions.h"
#include "stats/api/data_vector_pairs.h"
#include "stats/api/stats_data_types.h"
#include "stats/api/svd_data_model.h"
#include "tests/support/matchers.h"

namespace QVStats {
namespace {

using Values = std::vector<double>;

constexpr double kLew[] = {
    -213, -564, -35,  -15,  141,  115,  -420, -360, 203,  -338, -431, 194,  -220, -513, 154,  -125,
    -559, 92,   -21,  -579, -52,  99,   -543, -175, 162,  -457, -346, 204,  -300, -474, 164,  -107,
    -572, -8,   83,   -541, -224, 180,  -420, -374, 201,  -236, -531, 83,   27,   -564, -112, 131,
    -507, -254, 199,  -311, -495, 143,  -46,  -579, -90,  136,  -472, -338, 202,  -287, -477, 169,
    -124, -568, 17,   48,   -568, -135, 162,  -430, -422, 172,  -74,  -577, -13,  92,   -534, -243,
    194,  -355, -465, 156,  -81,  -578, -64,  139,  -449, -384, 193,  -198, -538, 110,  -44,  -577,
    -6,   66,   -552, -164, 161,  -460, -344, 205,  -281, -504, 134,  -28,  -576, -118, 156,  -437,
    -381, 200,  -220, -540, 83,   11,   -568, -160, 172,  -414, -408, 188,  -125, -572, -32,  139,
    -492, -321, 205,  -262, -504, 142,  -83,  -574, 0,    48,   -571, -106, 137,  -501, -266, 190,
    -391, -406, 194,  -186, -553, 83,   -13,  -577, -49,  103,  -515, -280, 201,  300,  -506, 131,
    -45,  -578, -80,  138,  -462, -361, 201,  -211, -554, 32,   74,   -533, -235, 187,  -372, -442,
    182,  -147, -566, 25,   68,   -535, -244, 194,  -351, -463, 174,  -125, -570, 15,   72,   -550,
    -190, 172,  -424, -385, 198,  -218, -536, 96};
constexpr double kLottery[] = {
    162, 671, 933, 414, 788, 730, 817, 33,  536, 875, 670, 236, 473, 167, 877, 980, 316, 950, 456,
    92,  517, 557, 956, 954, 104, 178, 794, 278, 147, 773, 437, 435, 502, 610, 582, 780, 689, 562,
    964, 791, 28,  97,  848, 281, 858, 538, 660, 972, 671, 613, 867, 448, 738, 966, 139, 636, 847,
    659, 754, 243, 122, 455, 195, 968, 793, 59,  730, 361, 574, 522, 97,  762, 431, 158, 429, 414,
    22,  629, 788, 999, 187, 215, 810, 782, 47,  34,  108, 986, 25,  644, 829, 630, 315, 567, 919,
    331, 207, 412, 242, 607, 668, 944, 749, 168, 864, 442, 533, 805, 372, 63,  458, 777, 416, 340,
    436, 140, 919, 350, 510, 572, 905, 900, 85,  389, 473, 758, 444, 169, 625, 692, 140, 897, 672,
    288, 312, 860, 724, 226, 884, 508, 976, 741, 476, 417, 831, 15,  318, 432, 241, 114, 799, 955,
    833, 358, 935, 146, 630, 830, 440, 642, 356, 373, 271, 715, 367, 393, 190, 669, 8,   861, 108,
    795, 269, 590, 326, 866, 64,  523, 862, 840, 219, 382, 998, 4,   628, 305, 747, 247, 34,  747,
    729, 645, 856, 974, 24,  568, 24,  694, 608, 480, 410, 729, 947, 293, 53,  930, 223, 203, 677,
    227, 62,  455, 387, 318, 562, 242, 428, 968};
// (v + 200000) / 100000.
constexpr double kMavro[] = {180, 170, 180, 190, 180, 170, 150, 140, 150, 150, 170, 180, 180,
                             190, 190, 210, 200, 160, 140, 130, 130, 150, 150, 160, 150, 140,
                             130, 140, 150, 140, 150, 160, 150, 160, 190, 200, 200, 210, 220,
                             230, 240, 250, 270, 260, 260, 260, 270, 260, 250, 240};
// (v + 299000) / 1000.
constexpr double kMichelso[] = {
    850,  740, 900, 1070, 930, 850, 950, 980, 980, 880, 1000, 980, 930, 650, 760, 810, 1000,
    1000, 960, 960, 960,  940, 960, 940, 880, 800, 850, 880,  900, 840, 830, 790, 810, 880,
    880,  830, 800, 790,  760, 800, 880, 880, 880, 860, 720,  720, 620, 860, 970, 950, 880,
    910,  850, 870, 840,  840, 850, 840, 840, 840, 890, 810,  810, 820, 800, 770, 760, 740,
    750,  760, 910, 920,  890, 860, 880, 720, 840, 850, 850,  780, 890, 840, 780, 810, 760,
    810,  790, 810, 820,  850, 870, 870, 810, 740, 810, 940,  950, 800, 810, 870};

/// (v + shift) / scale, the double nearest to the decimal number.
template <std::size_t Size>
Values Read(const double (&values)[Size], double shift = 0.0, double scale = 1.0) {
  Values read;
  for (const double v : values) read.push_back((v + shift) / scale);
  return read;
}

/// c + 0.2, then 500 times c + 0.1 and c + 0.3.
Values MakeNumAcc(double c) {
  Values x = {c + 0.2};
  for (int i = 0; i < 500; ++i) x.insert(x.end(), {c + 0.1, c + 0.3});
  return x;
}

TEST(Nist, UnivariateSummaryStatistics) {
  const struct {
    const char* name;
    Values x;
    double mean, deviation;
    double tolerance;  // what the data hold of the deviation, 2^-52 c / 0.1 for a mean of c
  } rows[] = {
      {"Lew", Read(kLew), -177.435, 277.332168044316, 4e-15},
      {"Lottery", Read(kLottery), 518.958715596330, 291.699727470969, 4e-15},
      {"Mavro", Read(kMavro, 200000, 100000), 2.001856, 0.000429123454003053, 2e-13},
      {"Michelso", Read(kMichelso, 299000, 1000), 299.8524, 0.0790105478190518, 1e-13},
      {"NumAcc1", {10000001, 10000003, 10000002}, 10000002, 1, 0},
      {"NumAcc2", MakeNumAcc(1), 1.2, 0.1, 4e-15},
      {"NumAcc3", MakeNumAcc(1e6), 1000000.2, 0.1, 2e-9},
      {"NumAcc4", MakeNumAcc(1e7), 10000000.2, 0.1, 2e-8},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT(QVSampleMean()(row.x), IsCloseTo(row.mean, 1e-15));
    EXPECT_THAT(std::sqrt(QVSampleVariance()(row.x)), IsCloseTo(row.deviation, row.tolerance));
    double center, scale;
    QVGetCenterAndScale(center, scale, false, row.x);
    EXPECT_THAT(center, IsCloseTo(row.mean, 1e-15));
    EXPECT_THAT(scale, IsCloseTo(row.deviation, row.tolerance));
  }
}

// y, x
constexpr double kNorris[][2] = {
    {0.1, 0.2},     {338.8, 337.4}, {118.1, 118.2}, {888.0, 884.6}, {9.2, 10.1},    {228.1, 226.5},
    {668.5, 666.3}, {998.5, 996.3}, {449.1, 448.6}, {778.9, 777.0}, {559.2, 558.2}, {0.3, 0.4},
    {0.1, 0.6},     {778.1, 775.5}, {668.8, 666.9}, {339.3, 338.0}, {448.9, 447.5}, {10.8, 11.6},
    {557.7, 556.0}, {228.3, 228.1}, {998.0, 995.8}, {888.8, 887.6}, {119.6, 120.2}, {0.3, 0.3},
    {0.6, 0.3},     {557.6, 556.8}, {339.3, 339.1}, {888.0, 887.2}, {998.5, 999.0}, {778.9, 779.0},
    {10.2, 11.1},   {117.6, 118.3}, {228.9, 229.2}, {668.4, 669.1}, {449.2, 448.9}, {0.2, 0.5}};

TEST(Nist, LineThroughNorris) {
  std::vector<std::pair<double, double>> pairs;
  for (const auto& row : kNorris) pairs.emplace_back(row[1], row[0]);
  const auto [intercept, slope] = QVInterceptSlopeOfOLSRegression().GetPairStatistic(pairs);
  EXPECT_THAT(intercept, IsCloseTo(-0.262323073774029, 1e-11));
  EXPECT_THAT(slope, IsCloseTo(1.00211681802045, 1e-14));
  EXPECT_THAT(QVTwoSampleRegressionSlope()(pairs), IsCloseTo(1.00211681802045, 1e-14));
  EXPECT_THAT(QVTwoSampleRSquared()(pairs), IsCloseTo(0.999993745883712, 1e-14));
  EXPECT_THAT(QVTwoSamplePearsonCorrelation()(pairs),
              IsCloseTo(std::sqrt(0.999993745883712), 1e-14));
}

// At x = 150000, 300000, ..., 3000000, twice.
constexpr double kPontius[] = {
    .11019,  .21956,  .32949,  .43899,  .54803,  .65694,  .76562,  .87487,  .98292,  1.09146,
    1.20001, 1.30822, 1.41599, 1.52399, 1.63194, 1.73947, 1.84646, 1.95392, 2.06128, 2.16844,
    .11052,  .22018,  .32939,  .43886,  .54798,  .65739,  .76596,  .87474,  .98300,  1.09150,
    1.20004, 1.30818, 1.41613, 1.52408, 1.63159, 1.73965, 1.84696, 1.95445, 2.06177, 2.16829};
// y and the six predictors.
constexpr double kLongley[][7] = {{60323, 83, 234289, 2356, 1590, 107608, 1947},
                                  {61122, 88.5, 259426, 2325, 1456, 108632, 1948},
                                  {60171, 88.2, 258054, 3682, 1616, 109773, 1949},
                                  {61187, 89.5, 284599, 3351, 1650, 110929, 1950},
                                  {63221, 96.2, 328975, 2099, 3099, 112075, 1951},
                                  {63639, 98.1, 346999, 1932, 3594, 113270, 1952},
                                  {64989, 99, 365385, 1870, 3547, 115094, 1953},
                                  {63761, 100, 363112, 3578, 3350, 116219, 1954},
                                  {66019, 101.2, 397469, 2904, 3048, 117388, 1955},
                                  {67857, 104.6, 419180, 2822, 2857, 118734, 1956},
                                  {68169, 108.4, 442769, 2936, 2798, 120445, 1957},
                                  {66513, 110.8, 444546, 4681, 2637, 121950, 1958},
                                  {68655, 112.6, 482704, 3813, 2552, 123366, 1959},
                                  {69564, 114.2, 502601, 3931, 2514, 125368, 1960},
                                  {69331, 115.7, 518173, 4806, 2572, 127852, 1961},
                                  {70551, 116.9, 554894, 4007, 2827, 130081, 1962}};
// y, x
constexpr double kFilip[][2] = {
    {0.8116, -6.860120914}, {0.9072, -4.324130045}, {0.9052, -4.358625055}, {0.9039, -4.358426747},
    {0.8053, -6.955852379}, {0.8377, -6.661145254}, {0.8667, -6.355462942}, {0.8809, -6.118102026},
    {0.7975, -7.115148017}, {0.8162, -6.815308569}, {0.8515, -6.519993057}, {0.8766, -6.204119983},
    {0.8885, -5.853871964}, {0.8859, -6.109523091}, {0.8959, -5.79832982},  {0.8913, -5.482672118},
    {0.8959, -5.171791386}, {0.8971, -4.851705903}, {0.9021, -4.517126416}, {0.909, -4.143573228},
    {0.9139, -3.709075441}, {0.9199, -3.499489089}, {0.8692, -6.300769497}, {0.8872, -5.953504836},
    {0.89, -5.642065153},   {0.891, -5.031376979},  {0.8977, -4.680685696}, {0.9035, -4.329846955},
    {0.9078, -3.928486195}, {0.7675, -8.56735134},  {0.7705, -8.363211311}, {0.7713, -8.107682739},
    {0.7736, -7.823908741}, {0.7775, -7.522878745}, {0.7841, -7.218819279}, {0.7971, -6.920818754},
    {0.8329, -6.628932138}, {0.8641, -6.323946875}, {0.8804, -5.991399828}, {0.7668, -8.781464495},
    {0.7633, -8.663140179}, {0.7678, -8.473531488}, {0.7697, -8.247337057}, {0.77, -7.971428747},
    {0.7749, -7.676129393}, {0.7796, -7.352812702}, {0.7897, -7.072065318}, {0.8131, -6.774174009},
    {0.8498, -6.478861916}, {0.8741, -6.159517513}, {0.8061, -6.835647144}, {0.846, -6.53165267},
    {0.8751, -6.224098421}, {0.8856, -5.910094889}, {0.8919, -5.598599459}, {0.8934, -5.290645224},
    {0.894, -4.974284616},  {0.8957, -4.64454848},  {0.9047, -4.290560426}, {0.9129, -3.885055584},
    {0.9209, -3.408378962}, {0.9219, -3.13200249},  {0.7739, -8.726767166}, {0.7681, -8.66695597},
    {0.7665, -8.511026475}, {0.7703, -8.165388579}, {0.7702, -7.886056648}, {0.7761, -7.588043762},
    {0.7809, -7.283412422}, {0.7961, -6.995678626}, {0.8253, -6.691862621}, {0.8602, -6.392544977},
    {0.8809, -6.067374056}, {0.8301, -6.684029655}, {0.8664, -6.378719832}, {0.8834, -6.065855188},
    {0.8898, -5.752272167}, {0.8964, -5.132414673}, {0.8963, -4.811352704}, {0.9074, -4.098269308},
    {0.9119, -3.66174277},  {0.9228, -3.2644011}};
constexpr double kWamplerErrors[] = {759,   -2048, 2048,  -2048, 2523,  -2048, 2048,
                                     -2048, 1838,  -2048, 2048,  -2048, 1838,  -2048,
                                     2048,  -2048, 2523,  -2048, 2048,  -2048, 759};

/// A response and its predictors; the constant comes last among the coefficients.
struct Regression {
  const char* name;
  std::vector<Values> x;
  Values y;
  Values coefficients;
  double tolerance = 2e-13;
};

Values GetPowers(double x, int degree) {
  Values powers(1, x);
  while (static_cast<int>(powers.size()) < degree) powers.push_back(powers.back() * x);
  return powers;
}

Regression MakePontius() {
  Regression pontius = {"Pontius",
                        {},
                        Read(kPontius),
                        {0.732059160401003E-06, -0.316081871345029E-14, 0.673565789473684E-03}};
  for (int i = 0; i < 40; ++i) pontius.x.push_back(GetPowers(150000.0 * (i % 20 + 1), 2));
  return pontius;
}

Regression MakeLongley() {
  Regression longley = {
      "Longley",
      {},
      {},
      {15.0618722713733, -0.358191792925910E-01, -2.02022980381683, -1.03322686717359,
       -0.511041056535807E-01, 1829.15146461355, -3482258.63459582}};
  for (const auto& row : kLongley) {
    longley.y.push_back(row[0]);
    longley.x.emplace_back(row + 1, row + 7);
  }
  return longley;
}

/// Wampler1, 3, 4 and 5: 1 + x + ... + x^5 and errors that leave the fit as it is.
Regression MakeWampler(const char* name, double errorScale) {
  Regression wampler = {name, {}, {}, Values(6, 1.0)};
  for (int i = 0; i < 21; ++i) {
    wampler.x.push_back(GetPowers(i, 5));
    double y = 1.0 + errorScale * kWamplerErrors[i];
    for (const double power : wampler.x.back()) y += power;
    wampler.y.push_back(y);
  }
  return wampler;
}

/// 1 + 0.1 x + ... + 0.00001 x^5, to the five digits that are exact.
Regression MakeWampler2() {
  Regression wampler = {"Wampler2", {}, {}, {0.1, 0.01, 0.001, 0.0001, 0.00001, 1.0}};
  for (int i = 0; i < 21; ++i) {
    wampler.x.push_back(GetPowers(i, 5));
    double y = 1e5;
    for (int k = 1; k <= 5; ++k) y += std::pow(10.0, 5 - k) * std::pow(i, k);
    wampler.y.push_back(y / 1e5);
  }
  return wampler;
}

/// A polynomial of degree 10. That its powers are rounded to doubles moves the coefficients by
/// 1.3e-8 (solved with 80 digits from the rounded powers): no digit beyond is in the input.
Regression MakeFilip() {
  Regression filip = {
      "Filip",
      {},
      {},
      {-2772.17959193342, -2316.37108160893, -1127.97394098372, -354.478233703349,
       -75.1242017393757, -10.8753180355343, -1.06221498588947, -0.670191154593408E-01,
       -0.246781078275479E-02, -0.402962525080404E-04, -1467.48961422980},
      1.3e-8};
  for (const auto& row : kFilip) {
    filip.y.push_back(row[0]);
    filip.x.push_back(GetPowers(row[1], 10));
  }
  return filip;
}

TEST(Nist, LinearRegression) {
  for (const Regression& set :
       {MakePontius(), MakeLongley(), MakeWampler("Wampler1", 0), MakeWampler2(),
        MakeWampler("Wampler3", 1), MakeWampler("Wampler4", 100), MakeWampler("Wampler5", 10000),
        MakeFilip()}) {
    QVSVD<Values> model(set.x[0].size(), QVStatsBadData::BadDouble);
    for (std::size_t i = 0; i < set.y.size(); ++i) model.AddTraining(set.x[i], set.y[i]);
    ASSERT_TRUE(model.Train()) << set.name;
    for (std::size_t k = 0; k < set.coefficients.size(); ++k)
      EXPECT_THAT(model.GetCoefficients()[k], IsCloseTo(set.coefficients[k], set.tolerance))
          << set.name << " " << k;
  }
}

}  // namespace
}  // namespace QVStats
