// Logs in disk images that packaged tools make: mkntfs and ntfscp of ntfs-3g, qemu-img of
// qemu-utils, ewfacquirestream of ewf-tools. Where a tool is missing, its test says so and is
// skipped.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <random>

#include "image_tools.h"
#include "log_builder.h"
#include "samples_builder.h"

namespace zanvik::testing {
namespace {

constexpr std::size_t sector = 512;
constexpr std::size_t cluster = 4096;
constexpr std::size_t volume_bytes = 16 << 20;

std::string text_of(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

void write_at(const std::string& path, std::size_t offset, std::string_view bytes) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A volume with two logs and a text.
std::string make_volume(const scratch_dir& scratch) {
  const std::string path = scratch.write("fs.raw", "");
  std::filesystem::resize_file(path, volume_bytes);
  const std::string security = scratch.write("s", text_of(security_sample()));
  const std::string system = scratch.write("y", text_of(system_sample()));
  const std::string note = scratch.write("n", "ElfFil no log");
  EXPECT_TRUE(shell("mkntfs -F -q -c 4096 " + path));
  EXPECT_TRUE(shell("ntfscp " + path + " " + security + " security.evtx"));
  EXPECT_TRUE(shell("ntfscp " + path + " " + system + " system.log"));
  EXPECT_TRUE(shell("ntfscp " + path + " " + note + " note.evtx"));
  return path;
}

// A disk whose second partition is the volume.
std::string make_disk(const scratch_dir& scratch) {
  const std::string volume = file_text(make_volume(scratch));
  constexpr std::uint32_t first = 2048, second = 4096;
  std::string disk(second * sector, '\0');
  byte_vector table;
  for (const auto& [start, size, type] :
       {std::tuple{first, 2048u, 0x83}, {second, std::uint32_t(volume_bytes / sector), 7}}) {
    append_u32(table, 0);
    append_u32(table, static_cast<std::uint32_t>(type));
    append_u32(table, start);
    append_u32(table, size);
  }
  std::memcpy(disk.data() + 446, table.data(), table.size());
  disk[510] = '\x55';
  disk[511] = '\xaa';
  return scratch.write("disk.raw", disk + volume);
}

// What `export` gives, without the names and places of logs.
std::string events_of(const std::string& output) {
  std::string events;
  for (const std::string& line : lines_of(output)) {
    events += line.substr(0, line.find("\"zanvik\"")) + "\n";
  }
  return events;
}

std::string events_of_samples() {
  const scratch_dir scratch;
  const std::string security = scratch.write("s", text_of(security_sample()));
  const std::string system = scratch.write("y", text_of(system_sample()));
  return events_of(run_zanvik({"export", security, system}).out);
}

TEST(disk_image, logs_in_a_file_system_give_what_their_files_give) {
  NEED_IMAGES();
  NEED("mkntfs", "ntfs-3g");
  const scratch_dir scratch;
  const std::string image = make_volume(scratch);
  const auto run = run_zanvik({"export", image});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(events_of(run.out), events_of_samples());
  EXPECT_NE(run.out.find("\"log\":\"" + image + ":/security.evtx\""), std::string::npos);
  EXPECT_NE(run.out.find("\"log\":\"" + image + ":/system.log\""), std::string::npos);
  EXPECT_EQ(run_zanvik({"check", "--format", "csv", image}).status, 0);
}

TEST(disk_image, partitions_and_containers) {
  NEED_IMAGES();
  NEED("mkntfs", "ntfs-3g");
  NEED("qemu-img", "qemu-utils");
  NEED("ewfacquirestream", "ewf-tools");
  const scratch_dir scratch;
  const std::string disk = make_disk(scratch);
  const std::string base = scratch.path("");
  ASSERT_TRUE(shell("qemu-img convert -f raw -O vmdk " + disk + " " + base + "/a.vmdk"));
  ASSERT_TRUE(
      shell("qemu-img convert -f raw -O vpc -o force_size " + disk + " " + base + "/a.vhd"));
  ASSERT_TRUE(shell("ewfacquirestream -q -c none -S 4194304 -t " + base + "/a < " + disk));
  ASSERT_TRUE(shell("split -b 5M -d -a 3 --numeric-suffixes=1 " + disk + " " + base + "/a."));
  ASSERT_TRUE(std::filesystem::exists(base + "/a.E03")) << "the E01 image is split";
  const std::string expected = events_of_samples();
  for (const char* name : {"disk.raw", "a.vmdk", "a.vhd", "a.E01", "a.001"}) {
    const std::string image = base + "/" + name;
    const auto run = run_zanvik({"export", image});
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_EQ(events_of(run.out), expected) << name;
    EXPECT_NE(run.out.find(":p2:/security.evtx\""), std::string::npos) << name;
    const auto carved = run_zanvik({"export", "--carve", image});
    EXPECT_EQ(count(carved.out, "\"carved\":true"), count(run.out, "\n")) << name;
  }
  // The later parts of an image are no images.
  EXPECT_NE(run_zanvik({"export", base + "/a.E02"}).err.find("not an event log"),
            std::string::npos);
}

TEST(disk_image, deleted_files_and_free_space) {
  NEED_IMAGES();
  NEED("mkntfs", "ntfs-3g");
  const scratch_dir scratch;
  const std::string image = make_volume(scratch);
  std::string bytes = file_text(image);
  // The file's record in the master file table: its flag of being in use.
  std::string name;
  for (const char letter : std::string("system.log")) name += {letter, '\0'};
  const std::size_t named = bytes.find(name, 0);
  ASSERT_NE(named, std::string::npos);
  bool found = false;
  for (std::size_t at = 0; (at = bytes.find("FILE0", at)) != std::string::npos; ++at) {
    if (bytes.substr(at, 1024).find(name) == std::string::npos) continue;
    if ((bytes[at + 22] & 2) != 0) continue;  // the folder
    write_at(image, at + 22, std::string(1, '\0'));
    found = true;
  }
  ASSERT_TRUE(found);
  // Two pieces of a chunk in free clusters, near the end of the volume, where nothing is.
  const auto chunk = chunk_builder({record(7001), record(7002), record(7003)}).build();
  const std::size_t free_at = volume_bytes - 40 * cluster;
  ASSERT_EQ(bytes.find_first_not_of('\0', free_at), volume_bytes - sector) << "but a boot sector";
  write_at(image, free_at, {reinterpret_cast<const char*>(chunk.bytes.data()), 2 * cluster});
  const std::size_t plain = count(events_of_samples(), "\n");
  const auto run = run_zanvik({"export", image});
  EXPECT_EQ(events_of(run.out), events_of_samples());
  const std::size_t of_deleted = count(run.out, "/system.log\"");
  EXPECT_EQ(count(run.out, "\"deleted\":true"), of_deleted);
  EXPECT_GT(of_deleted, 0u);
  EXPECT_LT(of_deleted, plain);
  const auto carved = run_zanvik({"export", "--carve=unallocated", image});
  EXPECT_EQ(carved.status, 0) << carved.err;
  EXPECT_EQ(count(carved.out, "\n"), 3u);
  for (const std::size_t record : chunk.record_offsets) {
    EXPECT_NE(carved.out.find("\"offset\":" + std::to_string(free_at + record) + ","),
              std::string::npos);
  }
}

TEST(disk_image, an_encrypted_volume_is_reported) {
  NEED_IMAGES();
  NEED("mkntfs", "ntfs-3g");
  const scratch_dir scratch;
  const std::string disk = make_disk(scratch);
  write_at(disk, 2048 * sector, std::string("\xeb\x58\x90-FVE-FS-", 11));
  write_at(disk, 2048 * sector + 510, "\x55\xaa");
  const auto run = run_zanvik({"export", disk});
  EXPECT_EQ(run.err, "zanvik: " + disk + ":p1: the volume is encrypted with BitLocker\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(events_of(run.out), events_of_samples()) << "of the other volume";
}

// What an image makes of the libraries' parsers costs that image and no more.
TEST(disk_image, a_hostile_image_costs_a_message) {
  NEED_IMAGES();
  NEED("mkntfs", "ntfs-3g");
  const scratch_dir scratch;
  const std::string image = make_volume(scratch);
  const std::string good = file_text(image);
  const std::string log = scratch.write("good.evtx", text_of(security_sample()));
  const std::string expected = run_zanvik({"export", log}).out;
  std::mt19937 random(3);
  for (int round = 0; round < 12; ++round) {
    std::string bytes = good.substr(0, round % 3 == 0 ? random() % good.size() : good.size());
    for (int i = 0; i < 400 && !bytes.empty(); ++i) {
      const std::size_t at =
          (random() % 128 < 8 ? 512 : 0) + random() % std::min<std::size_t>(bytes.size(), 1 << 19);
      if (at >= 512 && at < bytes.size()) bytes[at] = static_cast<char>(random());
    }
    const std::string damaged = scratch.write("damaged.raw", bytes);
    const auto run = run_zanvik({"export", damaged, log});
    EXPECT_TRUE(run.status == 0 || run.status == 1) << run.status;
    EXPECT_TRUE(run.out.ends_with(expected)) << "the next path is read";
  }
  const auto empty = run_zanvik({"export", scratch.write("a.vmdk", "KDMV" + good.substr(0, 9000))});
  EXPECT_EQ(empty.status, 1);
  EXPECT_NE(empty.err.find("a.vmdk: "), std::string::npos) << empty.err;
}

}  // namespace
}  // namespace zanvik::testing
