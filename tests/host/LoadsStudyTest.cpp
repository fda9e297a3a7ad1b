// Fixtures, virtual walls, loads, foundation bolts and fatigue events of a study file: each
// kind of fault is refused naming its field, and a good study is handed to the report in the
// shapes of its lists.
#include <gtest/gtest.h>

#include <functional>

#include "host/HostTestKit.h"
#include "platform/host/fixture/StudyLoader.h"

using namespace hosttest;
using nlohmann::json;

namespace {

struct BadCase {
  const char* what;
  std::function<void(json&)> change;
  const char* field;
  const char* problem;
};

json Fatigue(int loadingType, json event) { return {{"loadingType", loadingType}, {"events", {event}}}; }

// Each case spoils the sample (fixtures Fixed-1, Roller/Slider-1, Foundation Bolt-1; a wall;
// loads with 1, 0, 2 and 3 curves) in one way.
const BadCase kBadCases[] = {
    {"loads not a list", [](json& j) { j["loads"] = {{"name", "Force-1"}}; }, "loads", "expected an array"},
    {"a fourth curve", [](json& j) { j["loads"][3]["curves"].push_back(j["loads"][0]["curves"][0]); },
     "loads[3].curves", "at most 3 curves, found 4"},
    {"a fixture with two curves",
     [](json& j) { j["fixtures"][0]["curves"] = {j["loads"][0]["curves"][0], j["loads"][0]["curves"][0]}; },
     "fixtures[0].curves", "at most 1 curve, found 2"},
    {"a wall with a curve", [](json& j) { j["virtualWalls"][0]["curves"] = j["loads"][0]["curves"]; },
     "virtualWalls[0].curves", "unknown field"},
    {"a load with forces", [](json& j) { j["loads"][0]["resultantForces"] = j["fixtures"][0]["resultantForces"]; },
     "loads[0].resultantForces", "unknown field"},
    {"details as a number", [](json& j) { j["fixtures"][1]["details"] = 3; }, "fixtures[1].details",
     "expected a text or an array of lines"},
    {"details line as a number", [](json& j) { j["fixtures"][2]["details"][1] = 3; }, "fixtures[2].details[1]",
     "expected a string"},
    {"details without a value", [](json& j) { j["loads"][1]["details"] = "Entities:\nno colon here\nType:  \t"; },
     "loads[1].details", "label: value"},
    {"missing details", [](json& j) { j["loads"][2].erase("details"); }, "loads[2].details", "missing"},
    {"a wall named as a fixture", [](json& j) { j["virtualWalls"][0]["name"] = "Roller/Slider-1"; },
     "virtualWalls[0].name", "earlier fixture or virtual wall"},
    {"a curve without its picture", [](json& j) { j["loads"][2]["curves"][1].erase("picture"); },
     "loads[2].curves[1].picture", "missing"},
    {"a bolt with resultant forces",
     [](json& j) { j["fixtures"][2]["resultantForces"] = j["fixtures"][0]["resultantForces"]; },
     "fixtures[2].resultantForces", "foundation bolt"},
    {"bolt rows without headings", [](json& j) { j["fixtures"][2]["foundationBolt"].erase("headings"); },
     "fixtures[2].foundationBolt.rows", "headings"},
    {"a bolt row of four", [](json& j) { j["fixtures"][2]["foundationBolt"]["rows"][1].erase(4); },
     "fixtures[2].foundationBolt.rows[1]", "5 strings, found 4"},
    {"loading type 4", [](json& j) { j["fatigue"] = Fatigue(4, {{"name", "E"}}); }, "fatigue.loadingType",
     "from 0 to 3"},
    {"cycles of a load history", [](json& j) { j["fatigue"] = Fatigue(1, {{"name", "E"}, {"cycles", "10"}}); },
     "fatigue.events[0].cycles", "unknown field"},
    {"studies of a duration",
     [](json& j) {
       j["fatigue"] = Fatigue(3, {{"name", "E"}, {"cycles", "1 h"}, {"loadType", "x"}, {"studies", json::array()}});
     },
     "fatigue.events[0].studies", "unknown field"},
    {"an event without its load type", [](json& j) { j["fatigue"] = Fatigue(0, {{"name", "E"}, {"cycles", "10"}}); },
     "fatigue.events[0].loadType", "missing"},
    {"an association of two",
     [](json& j) {
       j["fatigue"] = Fatigue(2, {{"name", "E"}, {"cycles", "10"}, {"loadType", "1"}, {"studies", json::array({json::array({"Static 1", "1"})})}});
     },
     "fatigue.events[0].studies[0]", "3 strings, found 2"},
    {"two events of one name",
     [](json& j) {
       json e = {{"name", "E"}, {"cycles", "10"}, {"loadType", "x"}};
       j["fatigue"] = {{"loadingType", 0}, {"events", {e, e}}};
     },
     "fatigue.events[1].name", "earlier event"},
};

class BadLoadsTest : public testing::TestWithParam<BadCase> {};

TEST_P(BadLoadsTest, IsRefusedNamingTheField) {
  const BadCase& c = GetParam();
  ExpectRefused({c.what, [&c](json& j, const fs::path&) { c.change(j); }, c.field, c.problem});
}

INSTANTIATE_TEST_SUITE_P(Faults, BadLoadsTest, testing::ValuesIn(kBadCases),
                         [](const auto& info) { return CaseName(info.param.what); });

std::string Base(const std::string& path) { return fs::path(path).filename().string(); }

TEST(LoadsStudyTest, TheSampleIsHandedOutInTheShapesOfTheReportsLists) {
  auto study = LoadFixtureStudy((SampleFolder() / "study.json").string());
  CStringList names(10), details(10), images(10), curves(10);
  study->GetLBCDetails(names, details, images, curves, u"/tmp", 0, 1);
  study->GetVirtualWallContactDetailsForReport(u"/tmp", names, details, images);
  EXPECT_EQ(Strings(names), (std::vector<std::string>{"Fixed-1", "Roller/Slider-1", "Foundation Bolt-1", "Virtual Wall-1"}));
  EXPECT_EQ(Strings(details)[2], "Entities:\t1 edge(s)\nType:\tFoundation bolt\nBolt diameter:\t6 mm\nPre-load:\t2,000 N");
  EXPECT_EQ(Base(Strings(images)[3]), "wall-floor.jpg");
  // A pair per fixture, none for the wall.
  EXPECT_EQ(Strings(curves), std::vector<std::string>(6, ""));

  CStringList loadNames(10), loadDetails(10), loadImages(10), loadCurves(10);
  study->GetLBCDetails(loadNames, loadDetails, loadImages, loadCurves, u"/tmp", 1, 1);
  EXPECT_EQ(loadNames.GetCount(), 4);
  std::vector<std::string> shape;
  for (const std::string& s : Strings(loadCurves)) shape.push_back(s.find('/') == std::string::npos ? s : Base(s));
  EXPECT_EQ(shape, (std::vector<std::string>{
                       "curve-force-ramp.png", "Time curve: ramp to full load in 0.4 s",
                       "", "",
                       "Multiple Curves", "2",
                       "curve-pressure-time.png", "Time curve", "curve-pressure-temperature.png", "Temperature curve",
                       "Multiple Curves", "3",
                       "curve-remote-x.png", "X component", "curve-remote-y.png", "Y component",
                       "curve-remote-z.png", "Z component"}));
  // Pins: a name per connector, a group's members as "group ? member"; details once a block.
  CStringList pinNames(10), pinDetails(10), pinImages(10), pinCurves(10);
  study->GetLBCDetails(pinNames, pinDetails, pinImages, pinCurves, u"/tmp", 3, 1);
  EXPECT_EQ(Strings(pinNames), (std::vector<std::string>{"Tie Rod Pins ? Upper end", "Tie Rod Pins ? Lower end", "Base Bolt-1"}));
  EXPECT_EQ(pinDetails.GetCount(), 2);

  CStringList forces(10), moments(10);
  EXPECT_EQ(study->GetReactionForcesOfRestraint(u"Virtual Wall-1", forces, moments), 1);
  EXPECT_EQ(Strings(forces), (std::vector<std::string>{"Contact force(N)", "0", "-312.52", "0", "312.52"}));
  EXPECT_EQ(moments.GetCount(), 5);
  CStringList boltForces(10), boltMoments(10);
  EXPECT_EQ(study->GetReactionForcesOfRestraint(u"Foundation Bolt-1", boltForces, boltMoments), 0);
  EXPECT_TRUE(boltForces.IsEmpty());
  EXPECT_EQ(study->GetReactionForcesOfRestraint(u"Force-1", boltForces, boltMoments), 0);

  LBCManager* lbc = study->GetLBCManager();
  ASSERT_TRUE(lbc);
  ASSERT_TRUE(lbc->GetSpecialLoadsByItemName(u"Foundation Bolt-1"));
  EXPECT_NE(lbc->GetSpecialLoadsByItemName(u"Foundation Bolt-1")->IsFoundationBolt(), 0);
  EXPECT_EQ(lbc->GetSpecialLoadsByItemName(u"Fixed-1"), nullptr);

  CStringList boltNames(10), rows(10);
  boltNames.AddTail(u"Foundation Bolt-1");
  study->GetBolt_Pin_Bearing_ConnectorForces(boltNames, rows);
  const std::vector<std::string> list = Strings(rows);
  ASSERT_EQ(list.size(), 5u + 3u * 5u + 1u);
  EXPECT_EQ(list[5], "Axial Force (N)");
  EXPECT_EQ(list.back(), "...");
}

TEST(LoadsStudyTest, TheFatigueSampleGivesEventsAndTheirStudies) {
  auto study = LoadFixtureStudy((SampleFolder().parent_path() / "fatigue" / "study.json").string());
  EXPECT_EQ(study->GetStudyType(), 7);
  int loadingType = -1;
  CStringList events(10), values(10);
  study->GetFatigueLoadingOptionsForReport(u"/tmp", loadingType, events, values);
  EXPECT_EQ(loadingType, 1);
  EXPECT_EQ(Strings(events), (std::vector<std::string>{"Service", "Overload"}));
  ASSERT_EQ(values.GetCount(), 2);  // a load history picture per event
  EXPECT_EQ(Base(Strings(values)[1]), "history-overload.png");
  EXPECT_TRUE(fs::is_regular_file(Strings(values)[0]));

  CStringList associations(10);
  study->GetStudyAssociationListOfFatigueEvent(u"Service", associations);
  EXPECT_EQ(Strings(associations),
            (std::vector<std::string>{"Static 1", "1", "1", "Static 2 (thermal)", "0.35", "1"}));
  CStringList unknown(10);
  study->GetStudyAssociationListOfFatigueEvent(u"Transport", unknown);
  EXPECT_TRUE(unknown.IsEmpty());
}

TEST(LoadsStudyTest, AStudyWithoutTheListsHasNone) {
  ScratchDir dir;
  json j = SampleJson();
  for (const char* key : {"fixtures", "virtualWalls", "loads"}) j.erase(key);
  auto study = LoadFixtureStudy(WriteStudy(dir, j));
  CStringList names(10), details(10), images(10), curves(10);
  study->GetLBCDetails(names, details, images, curves, u"/tmp", 0, 1);
  study->GetVirtualWallContactDetailsForReport(u"/tmp", names, details, images);
  study->GetLBCDetails(names, details, images, curves, u"/tmp", 1, 1);
  EXPECT_TRUE(names.IsEmpty());
  EXPECT_TRUE(curves.IsEmpty());
  int loadingType = -1;
  CStringList events(10), values(10);
  study->GetFatigueLoadingOptionsForReport(u"/tmp", loadingType, events, values);
  EXPECT_EQ(loadingType, 0);
  EXPECT_TRUE(events.IsEmpty());
}

}  // namespace
