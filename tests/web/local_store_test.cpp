#include "platform/web/local_store.h"

#include <gmock/gmock.h>

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

/// What a browser keeps, another tab's changes included.
class MemoryItems : public LocalItems {
 public:
  std::map<std::string, std::string> texts;
  /// Why the browser refuses to write; empty for not.
  std::string refusal;
  int writes = 0;

  std::optional<std::string> read(const std::string& key) const override {
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  }
  std::string write(const std::vector<Change>& changes) override {
    ++writes;
    if (!refusal.empty()) return refusal;
    for (const auto& [key, text] : changes) {
      texts.erase(key);
      if (text) texts[key] = *text;
    }
    return "";
  }
};

class LocalStoreTest : public testing::Test {
 protected:
  LocalStoreTest() {
    store_.failed = [this](const std::string& key, const std::string& line) {
      told_.emplace_back(key, line);
    };
  }
  void save(const std::string& key, const Value& value) {
    store_.setValue(key, value);
    store_.synchronize();
  }

  MemoryItems items_;
  LocalStore store_{items_};
  std::vector<std::pair<std::string, std::string>> told_;
};

TEST_F(LocalStoreTest, ChangesAreSeenAtOnceAndWrittenTogetherAndAgainWhereTheyWereRefused) {
  items_.texts = {{"email", "\"a@b.de\""}, {"gone", "1"}};
  store_.setValue("email", "c@d.de");
  store_.removeValue("gone");
  EXPECT_EQ(store_.value("email"), Value("c@d.de"));
  EXPECT_EQ(store_.value("gone"), std::nullopt);
  EXPECT_EQ(items_.writes, 0);
  items_.refusal = "full";
  store_.synchronize();
  EXPECT_THAT(told_, ElementsAre(Pair("", "full")));
  items_.refusal.clear();
  store_.synchronize();
  store_.synchronize();
  EXPECT_THAT(items_.texts, ElementsAre(Pair("email", "\"c@d.de\"")));
  EXPECT_EQ(items_.writes, 2);
  EXPECT_EQ(store_.value("email"), Value("c@d.de"));
  // Another tab's.
  items_.texts["email"] = "\"e@f.de\"";
  EXPECT_EQ(store_.value("email"), Value("e@f.de"));
}

TEST_F(LocalStoreTest, ChangesThatBelongTogetherAreOneWriteOrNone) {
  const auto change = [this] {
    store_.exclusively([this] {
      store_.setValue("values", 1);
      store_.exclusively([this] { store_.setValue("last", 2); });
      store_.synchronize();
      EXPECT_EQ(items_.writes, 0) << "not before the outermost end";
    });
  };
  items_.refusal = "full";
  change();
  EXPECT_THAT(told_, ElementsAre(Pair("", "full")));
  EXPECT_EQ(store_.value("values"), std::nullopt) << "given up";
  items_.refusal.clear();
  items_.writes = 0;
  change();
  EXPECT_EQ(items_.writes, 1) << "once for both";
  EXPECT_THAT(items_.texts, ElementsAre(Pair("last", "2"), Pair("values", "1")));

  items_.texts["values"] = "[{";
  store_.exclusively([this] {
    store_.setValue("values", 1);
    store_.removeValue("last");
  });
  store_.synchronize();
  EXPECT_EQ(items_.texts["last"], "2") << "what one change was refused for stays undone";
  store_.exclusively([this] { store_.setValue("last", 3); });
  EXPECT_EQ(items_.texts["last"], "3");
}

TEST_F(LocalStoreTest, AListIsNotWrittenOverWhereItChangedElsewhereOrIsNone) {
  const auto add = [this] {
    return store_.exclusively([this] {
      Value::Array list = *store_.value("values").value_or(Value::Array{}).array();
      list.emplace_back(1);
      store_.setValue("values", list);
    });
  };
  const auto replace = [this] {
    return store_.exclusively([this] { store_.setValue("values", Value::Array{}); });
  };
  EXPECT_TRUE(add());
  EXPECT_TRUE(replace()) << "written here";
  items_.texts["values"] = "[1,2]";
  EXPECT_FALSE(replace());
  EXPECT_THAT(told_.back().second, HasSubstr("another tab"));
  EXPECT_TRUE(add()) << "once it has been read";
  EXPECT_EQ(store_.value("values")->array()->size(), 3U);
  items_.texts.clear();
  EXPECT_FALSE(replace()) << "cleared by the browser";
  EXPECT_TRUE(add());

  store_.understands = [](std::string_view, const Value& value) { return value.array(); };
  items_.texts["values"] = "5";
  EXPECT_EQ(store_.value("values"), std::nullopt);
  EXPECT_FALSE(replace());
  EXPECT_EQ(items_.texts["values"], "5");
}

TEST_F(LocalStoreTest, ADamagedItemRefusesChangesUntilItIsSetAside) {
  const std::string damaged = "[{\"hr\":7";
  items_.texts = {{"values", damaged}, {"email", "\"somebody@"}};
  for (int times = 0; times < 2; ++times) EXPECT_EQ(store_.value("values"), std::nullopt);
  ASSERT_THAT(told_, ElementsAre(Pair("values", HasSubstr("damaged")))) << "once for reading";
  save("values", 1);
  store_.removeValue("values");
  EXPECT_EQ(told_.size(), 3U) << "and for each change that it refuses";
  EXPECT_EQ(store_.rawText("values"), damaged);
  // One that nobody has read, and a text that no browser could store.
  told_.clear();
  save("email", "a@b.de");
  save("note", "\xff");
  EXPECT_THAT(told_, ElementsAre(Pair("email", HasSubstr("damaged")), Pair("", HasSubstr("note"))));
  EXPECT_EQ(items_.texts["email"], "\"somebody@");
  EXPECT_EQ(items_.writes, 0);

  items_.refusal = "full";
  store_.setAside("values", Date{1'700'000'000});
  save("values", 1);
  items_.refusal.clear();
  store_.synchronize();
  items_.texts.erase("email");
  EXPECT_THAT(items_.texts, ElementsAre(Pair("damaged values 1700000000", damaged)));
  store_.setAside("values", Date{1'700'000'001});
  save("values", 1);
  EXPECT_EQ(items_.texts["values"], "1");
}

}  // namespace
}  // namespace veyla
