// SPDX-License-Identifier: Apache-2.0
// A change of each section in which one system call is refused: it is made, or nothing of it is.
// A test run takes a part of the places, evenly; ZARNNET_STRIDE=1 takes all.
#include <cstdlib>
#include <gtest/gtest.h>
#include <zarnnetchange/change.h>

#include "record/generation.h"
#include "support/appliance.h"
#include "torture/torture.h"
#include "wish.h"

using namespace test;

void torture::Shell(const std::string& command) {
  test::Shell(command);
}

namespace {

struct Row {
  const char* section;
  const char* wish;
  const char* before = "true";
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.section;
}

// clang-format off
const Row kRows[] = {
  {"host", R"({"host":{"name":"nas"}})"},
  {"interfaces", R"({"interfaces":{"eth0":{"mtu":1400,"ipv4":{"address":"192.168.50.12"}}}})"},
  {"bonds", R"({"bonds":{"bond0":{"mode":"802.3ad","slaves":["eth1","eth2"]}}})"},
  {"bridges", R"({"bridges":{"br0":{"ports":["eth0"]}}})"},
  {"vlans", R"({"vlans":{"eth0.7":{}}})"},
  {"dns", R"({"dns":{"servers":["192.168.50.1"]}})"},
  {"routes", R"({"routes":{"gateway":"192.168.50.2"}})"},
  {"topology", R"({"topology":{"name":"bridge"}})",
   "printf 'support_net_topology=\"yes\"\\nnet_topology=\"router\"\\n' >>/etc/zarninfo.conf"},
  {"dhcp_server", R"({"dhcp_server":{"enabled":true,"interfaces":{"eth0":{"ipv4":{"enabled":true,)"
   R"("subnets":{"0":{"prefix":24,"start":"192.168.50.100","end":"192.168.50.150"}}}}}}})"},
  {"pppoe", R"({"pppoe":{"interface":"eth1","user":"bob","password":"Hidden.1"}})"},
  {"pppoe_relay", R"({"pppoe_relay":{"eth0":{"enabled":true,"server":"eth1"}}})"},
  {"tunnel", R"({"tunnel":{"server":"b.example","user":"bob","password":"Hidden.2"}})"}};
// clang-format on
constexpr char kInsist[] = R"({"insist":true,"probe":false})";

struct Answer {
  int result = 0;
  char reason[1024] = "";
};

class Subject {
 public:
  explicit Subject(const Row& row) : row_(row) {
    SetUpEth0();
    Shell(row.before);
    everything_ = torture::Machine().Look();
    before_ = change::KeepGeneration();
    files_ = Files();
    reference_ = torture::Call(call_);
    wanted_ = Files();
    PutBack();
    EXPECT_EQ(Left(), "") << row_.section;
  }

  // Once more, with the fault.
  void Try(const torture::Fault& fault) {
    const torture::Outcome outcome = torture::Call(call_, fault);
    if (!outcome.reached) return;
    const std::string wrong = outcome.left + (answer_->result == 0 ? NotMade() : Left());
    if (wrong.empty()) return;
    ADD_FAILURE() << row_.section << ", " << fault.Name() << ":" << wrong << "(" << answer_->reason
                  << ")";
    change::PutBack(*before_);
    torture::Machine().PutBack(everything_);
  }

  const std::vector<long>& Places() const { return reference_.counts; }

 private:
  static std::map<std::string, std::string> Files() {
    auto files = torture::Machine().Look().files;
    std::erase_if(files, [](const auto& file) { return file.first.starts_with("/run/"); });
    return files;
  }

  void PutBack() {
    if (answer_->result == 0) ZARNNetChangeUndo(kInsist, nullptr, nullptr, nullptr);
  }

  std::string NotMade() {
    const bool made = ZARNNetChangeCompare(row_.wish, nullptr, nullptr) == ZARNNETCHANGE_DONE;
    const std::string other = DifferencesFrom(wanted_);
    PutBack();
    return (made ? "" : " says yes, and it is not so; ") + other + Left();
  }

  static std::string DifferencesFrom(const std::map<std::string, std::string>& files) {
    std::string differences;
    const auto now = Files();
    for (const auto& [path, node] : files) {
      const auto found = now.find(path);
      if (found == now.end() || found->second != node) differences += " " + path + " is other;";
    }
    for (const auto& [path, node] : now)
      if (!files.contains(path)) differences += " " + path + " is left;";
    return differences;
  }

  // What is not as it was.
  std::string Left() {
    std::string left = DifferencesFrom(files_);
    for (const std::string& difference : change::DifferencesFrom(*before_))
      left += " " + difference + ";";
    if (answer_->result == ZARNNETCHANGE_NOT_PUT_BACK) left += " says that it was not put back";
    return left;
  }

  const Row& row_;
  Answer* const answer_ = torture::Shared<Answer>();
  const std::function<int()> call_ = [this] {
    char* report = nullptr;
    answer_->result = ZARNNetChangeApply(row_.wish, kInsist, nullptr, nullptr, &report);
    const auto said = nlohmann::json::parse(report != nullptr ? report : "{}");
    said.value("reason", "").copy(answer_->reason, sizeof answer_->reason - 1);
    ZARNNetChangeFree(report);
    return answer_->result;
  };
  torture::Outcome reference_;
  std::optional<change::Generation> before_;
  std::map<std::string, std::string> files_, wanted_;
  torture::State everything_;
};

}  // namespace

class Faults : public ::testing::TestWithParam<Row> {};

TEST_P(Faults, AChangeIsMadeOrNothingOfIt) {
  const char* const text = std::getenv("ZARNNET_STRIDE");
  const long stride = text != nullptr ? std::stol(text) : 251;
  Subject subject(GetParam());
  for (int kind = torture::kOpen; kind <= torture::kOwner; ++kind) {
    if (kind == torture::kShort) continue;  // a disk that stays full takes nothing back
    for (long at = kind % stride; at < subject.Places()[kind]; at += stride)
      subject.Try({static_cast<torture::Kind>(kind), at});
  }
}

INSTANTIATE_TEST_SUITE_P(Sections, Faults, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.section); });
