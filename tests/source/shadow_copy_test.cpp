// Logs in volume shadow copies of an NTFS volume. mkntfs and ntfscp make the volume, the shadow
// builder its copies; vshadowinfo, where it is installed, says whether these are sound.
#include <fstream>

#include "image_tools.h"
#include "log_builder.h"
#include "shadow_builder.h"

namespace zanvik::testing {
namespace {

constexpr std::size_t volume_bytes = 6 << 20;

std::string text_of(const log_builder& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

// A volume whose log grew between two copies, and was cleared after them.
class shadow_copies_of_a_volume : public ::testing::Test {
 protected:
  void SetUp() override {
    NEED_IMAGES();
    NEED("mkntfs", "ntfs-3g");
    const std::string live = scratch_.write("live.raw", "");
    std::filesystem::resize_file(live, volume_bytes);
    ASSERT_TRUE(shell("mkntfs -F -q -c 4096 " + live));
    const auto state_with = [&](const log_builder& log) {
      EXPECT_TRUE(shell("ntfscp " + live + " " + scratch_.write("l", text_of(log)) + " a.evtx"));
      return file_text(live);
    };
    const std::vector<std::string> then{
        state_with(log_builder().chunk({record(1), record(2), record(3)})),
        state_with(log_builder().chunk({record(1), record(2), record(3), record(4), record(5)}))};
    const std::string now = state_with(log_builder().chunk({record(6), record(7)}));
    const std::string volume = with_shadow_copies(then, now);
    ASSERT_EQ(volume.size(), now.size()) << "no room for the copies";
    image_ = scratch_.write("volume.raw", volume);
  }

  scratch_dir scratch_;
  std::string image_;
};

TEST_F(shadow_copies_of_a_volume, are_sound_to_the_tools_of_the_library) {
  NEED("vshadowinfo", "libvshadow-utils");
  ASSERT_TRUE(shell("vshadowinfo " + image_ + " | grep -q 'Number of stores:.*2'"));
}

TEST_F(shadow_copies_of_a_volume, have_the_log_as_it_was) {
  const auto run = run_zanvik({"export", image_});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(count(run.out, "\"log\":\"" + image_ + ":/a.evtx\""), 2u);
  EXPECT_EQ(count(run.out, "\"log\":\"" + image_ + ":vss1:/a.evtx\""), 3u);
  EXPECT_EQ(count(run.out, "\"log\":\"" + image_ + ":vss2:/a.evtx\""), 5u);
  EXPECT_EQ(count(run.out, "\"deleted\":true"), 0u);
  const auto list = run_zanvik({"export", "--list", image_}).out;
  for (const char* name : {":/a.evtx\n", ":vss1:/a.evtx\n", ":vss2:/a.evtx\n"}) {
    EXPECT_EQ(count(list, image_ + name), 1u) << list;
  }

  // Each event once, with the number of its copies.
  const auto unique = run_zanvik({"export", "--order", "time", "--unique", image_});
  EXPECT_EQ(unique.err, "");
  EXPECT_EQ(lines_of(unique.out).size(), 7u);
  for (int number = 1; number <= 7; ++number) {
    EXPECT_EQ(count(unique.out, "\"record\":" + std::to_string(number) + ","), 1u) << number;
  }
  EXPECT_EQ(count(unique.out, "\"copies\":2"), 3u);
  EXPECT_EQ(count(unique.out, "\"copies\":1"), 4u);
}

}  // namespace
}  // namespace zanvik::testing
