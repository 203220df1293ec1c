// The life of 1D and 3D LUTs, and what refuses measurements.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "library/calls.h"
#include "lut3d.h"
#include "text.h"

TEST(Lut1d, LivesFromInitToDestroy) {
  vexo_lut lut = {};
  ASSERT_EQ(vexo_lut_init_with_gamma(&lut, 1, 2.2F), 0); // a single entry is at the input 0
  EXPECT_EQ(lut.d[0], 0.0F);
  vexo_lut_destroy(&lut);
  ASSERT_EQ(vexo_lut_init_with_gamma(&lut, 4, 2.2F), 0);
  EXPECT_EQ(std::vector<float>(lut.d, lut.d + 4), (std::vector<float>{0, 0x1.6d562cp-4F, 0x1.a3a95ep-2F, 1}));
  std::vector<float> data = {4, 3, 2, 1};
  vexo_lut_set_data(&lut, data.data());
  EXPECT_EQ(std::vector<float>(lut.d, lut.d + 4), data);
  for (int i = 0; i < 2; i++) { // an empty record may be destroyed
    vexo_lut_destroy(&lut);
    EXPECT_TRUE(lut.size == 0 && lut.d == nullptr);
    vexo_lut_set_data(&lut, data.data());
  }
  ASSERT_EQ(vexo_lut_init_zero(&lut, 300), 0);
  EXPECT_EQ(std::vector<float>(lut.d, lut.d + 300), std::vector<float>(300));
  vexo_lut_destroy(&lut);
  const auto init_power = [](vexo_lut *l, int size) { return vexo_lut_init_with_gamma(l, size, 2.2F); };
  for (int (*init)(vexo_lut *, int) : {vexo_lut_init, vexo_lut_init_zero, +init_power}) {
    for (const int size : {-1, INT_MIN}) {
      EXPECT_EQ(diagnostics([&] { EXPECT_EQ(init(&lut, size), -1); }), "vexo_lut_init: malloc failed.\n");
      EXPECT_TRUE(lut.size == size && lut.d == nullptr);
    }
  }
}

TEST(Lut3d, CreationAndTitle) {
  const int wraps = sizeof(size_t) == 4 ? 711 : 1128104270; // 12 size^3 bytes wrap to what could be allocated
  for (const int size : {0, -1, INT_MIN, INT_MAX, 1 << 21, wraps}) {
    EXPECT_EQ(vexo_3dlut_create(size, "x"), nullptr) << size;
  }
  const Lut lut(vexo_3dlut_create(17, nullptr));
  EXPECT_EQ(vexo_3dlut_size(lut.get()), 17);
  EXPECT_EQ(components(lut.get()), std::vector<float>(4913 * 3, 0.0F));
  EXPECT_EQ(vexo_3dlut_title(lut.get()), nullptr);
  const char title[] = "Film Look";
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), title), 0);
  EXPECT_STREQ(vexo_3dlut_title(lut.get()), title);
  EXPECT_NE(vexo_3dlut_title(lut.get()), title);
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), vexo_3dlut_title(lut.get()) + 5), 0); // its own
  EXPECT_STREQ(vexo_3dlut_title(lut.get()), "Look");
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), nullptr), 0);
  EXPECT_EQ(vexo_3dlut_title(lut.get()), nullptr);
}

TEST(Lut3d, IndexesAndIdentity) {
  const Lut lut(vexo_3dlut_create(17, nullptr));
  EXPECT_EQ(vexo_3dlut_init_unit(lut.get()), 0);
  const std::vector<float> identity = components(lut.get());
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 0, 5, 16)->d[0], 1.0F); // red fastest
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 0, 5, 16)->d[1], 0.3125F);
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 0, 5, 16)->d[2], 0.0F);
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 1, 2, 3) - vexo_3dlut_item(lut.get(), 0, 0, 0), 289 + 34 + 3);
  vexo_vector v = {{9.0F, 9.0F, 9.0F}};
  for (const int bad : {-1, 17, INT_MIN, INT_MAX}) {
    for (int axis = 0; axis < 3; axis++) {
      int i[3] = {0, 0, 0};
      i[axis] = bad;
      EXPECT_EQ(vexo_3dlut_item(lut.get(), i[0], i[1], i[2]), nullptr) << bad << " on axis " << axis;
      EXPECT_EQ(vexo_3dlut_set_item(lut.get(), &v, i[0], i[1], i[2]), -1);
    }
  }
  EXPECT_EQ(components(lut.get()), identity);
  const Lut point = table(1, nullptr, [](int, int, int) { return vexo_vector{{1.0F, 1.0F, 1.0F}}; });
  vexo_3dlut_init_unit(point.get());
  EXPECT_EQ(components(point.get()), std::vector<float>(3, 0.0F));
}

TEST(Lcnr, SanityCheckNamesTheFirstFall) {
  vexo_lcnr lcnr = {{}, {}, 3};
  const auto check = [&] {
    int status = 1;
    std::string message = diagnostics([&] { status = vexo_lcnr_sanity_check(&lcnr); });
    EXPECT_EQ(status, message.empty() ? 0 : -1);
    return message;
  };
  lcnr.sample[0] = 9.0F; // levels are not looked at
  EXPECT_EQ(check(), "");
  lcnr.data[2][2][1] = 1.0F;
  EXPECT_EQ(check(), "Illegal value detect at 2:2:1\n");
  for (const int num : {-1, 0, 1, 2}) {
    lcnr.num = num;
    EXPECT_EQ(check(), "") << num;
  }
  lcnr.num = 65; // sixty-four at most
  lcnr.data[2][2][1] = 0.0F;
  lcnr.data[1][2][0] = lcnr.data[1][1][63] = NAN;
  EXPECT_EQ(check(), "");
  lcnr.data[1][1][62] = lcnr.data[1][1][0] = 2.5F;
  EXPECT_EQ(check(), "Illegal value detect at 1:1:0\n");
  lcnr.data[1][1][0] = 0.0F;
  lcnr.data[1][1][63] = 1.0F;
  EXPECT_EQ(check(), "Illegal value detect at 1:1:62\n");
}
