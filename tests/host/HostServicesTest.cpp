// The free functions of the add-in answer from the current host, or as an empty host.
#include <gtest/gtest.h>

#include "host/HostTestKit.h"
#include "platform/host/DesignSession.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/HostFunctions.h"
#include "platform/host/fixture/StudyLoader.h"

using namespace hosttest;

namespace {

// A test's host: overrides one answer, keeps the empty ones.
class TemplateOnlyHost : public HostServices {
public:
  CString GetReportTemplatePath() override { return u"/templates"; }
};

class ActiveDesignSession : public OrvOptSession_c {
public:
  int IsDesignStudyActive() override { return 1; }
};

}  // namespace

TEST(HostServicesTest, WithoutAHostTheFreeFunctionsAnswerEmpty) {
  ASSERT_FALSE(HasCurrentHost());
  COVReportOptions* options = reinterpret_cast<COVReportOptions*>(0x1);
  GetReportOptions(&options);
  EXPECT_EQ(options, nullptr);
  EXPECT_TRUE(GetReportTemplatePath().IsEmpty());
  EXPECT_TRUE(GetOVModelName().IsEmpty());
  EXPECT_EQ(ZephraGetAnalysisWizardState(), 0);
  EXPECT_EQ(OrvSession_c::OrvOpt(), nullptr);
  EXPECT_EQ(CaptureModelIsometricViewAsImage(u"/tmp/never.jpg"), 0);
  CStringList modelInfo, solids, shells, composites, beams, images, units;
  int count = 7;
  GetBodiesInformationFromTheModel(modelInfo, solids, shells, composites, beams, count, nullptr, 1,
                                   u"/tmp", images);
  ZpReportGetUnitsDetails(units);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(modelInfo.GetCount() + images.GetCount() + units.GetCount(), 0);
}

TEST(HostServicesTest, ScopesInstallAndRestoreHostsAndAFixtureHostLeavesNoDanglingHost) {
  TemplateOnlyHost outer;
  {
    HostScope a(outer);
    EXPECT_EQ(GetReportTemplatePath(), u"/templates");
    EXPECT_TRUE(GetOVModelName().IsEmpty());  // the defaults stay empty
    {
      FixtureHost fixture(LoadFixtureStudy((SampleFolder() / "study.json").string()));
      HostScope b(fixture);
      EXPECT_EQ(GetOVModelName(), u"Bracket");
      EXPECT_TRUE(GetReportTemplatePath().IsEmpty());
    }
    EXPECT_EQ(GetReportTemplatePath(), u"/templates");
  }
  EXPECT_FALSE(HasCurrentHost());

  // Installed by hand and destroyed: the free functions fall back to the empty host.
  {
    auto fixture = std::make_unique<FixtureHost>();
    SetCurrentHost(fixture.get());
    EXPECT_TRUE(HasCurrentHost());
  }
  EXPECT_FALSE(HasCurrentHost());
}

TEST(HostServicesTest, FixtureHostAnswersFromItsSettingsAndItsStudy) {
  FixtureHost host(LoadFixtureStudy((SampleFolder() / "study.json").string()));
  ActiveDesignSession session;
  host.SetDesignSession(&session);
  HostScope scope(host);
  EXPECT_EQ(GetResultFilesPath(), u"Projects\\Bracket\\Results");
  EXPECT_EQ(ZephraGetAnalysisWizardState(), 0);
  host.SetWizardState(1);
  EXPECT_EQ(ZephraGetAnalysisWizardState(), 1);
  ASSERT_EQ(OrvSession_c::OrvOpt(), &session);
  ActivateViewNormalTo2DPlane(host.Study());
  EXPECT_EQ(host.ViewNormalTo2DPlaneCalls(), 1);
  CString type;
  host.Study()->GetStudyTypeNameWithSubType(type);
  EXPECT_EQ(type, u"Static");
}
