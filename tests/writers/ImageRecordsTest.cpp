// The manager's image records: which report shows which image in which section, through
// renames, pastes and copies of the manager.
#include <gtest/gtest.h>

#include <list>

#include "core/framework/COVReportManager.h"

namespace {

COVReportImage* Image(const char16_t* name) {
  auto* image = new COVReportImage;
  image->m_imageName = name;
  image->m_imagePath = CString(name) + u".png";
  return image;
}

std::vector<CString> Names(COVReportManager& manager, const CString& report, int section) {
  std::list<COVReportImage*> images;
  manager.GetImagesOfReportIncludedInSection(report, section, images);
  std::vector<CString> names;
  for (COVReportImage* image : images) names.push_back(image->m_imageName);
  return names;
}

TEST(ImageRecords, InclusionsFollowReportsThroughRenamesPastesAndCopies) {
  COVReportManager manager;
  COVReportImage* plot = Image(u"Plot");
  COVReportImage* curve = Image(u"Curve");
  manager.InsertNewImage(plot);
  manager.InsertNewImage(curve);
  plot->IncludeImageInReport(u"R1", 2, u"Model");
  plot->IncludeImageInReport(u"R1", 5, u"Materials");
  plot->IncludeImageInReport(u"R1", 5, u"Materials");  // not recorded twice
  curve->IncludeImageInReport(u"R1", 5, CString());
  curve->IncludeImageInReport(u"R2", 14, CString());

  // List order, one entry per image and section.
  EXPECT_EQ(Names(manager, u"R1", 5), (std::vector<CString>{u"Plot", u"Curve"}));
  EXPECT_EQ(Names(manager, u"R1", 2), (std::vector<CString>{u"Plot"}));
  EXPECT_TRUE(Names(manager, u"R1", 14).empty());
  EXPECT_EQ(plot->GetIncludedSectionNameOfReport(u"R1"), CString(u"Model"));
  EXPECT_TRUE(plot->GetIncludedSectionNameOfReport(u"R2").IsEmpty());

  manager.ChangeReportNameOfAllImages(u"R1", u"Renamed");
  EXPECT_TRUE(Names(manager, u"R1", 5).empty());
  EXPECT_EQ(Names(manager, u"Renamed", 5), (std::vector<CString>{u"Plot", u"Curve"}));

  manager.PasteImagesFromReportToReport(u"Renamed", u"Copy");
  EXPECT_EQ(Names(manager, u"Copy", 2), (std::vector<CString>{u"Plot"}));
  EXPECT_EQ(Names(manager, u"Renamed", 2), (std::vector<CString>{u"Plot"}));

  EXPECT_EQ(manager.GetImage(u"Curve"), curve);
  EXPECT_EQ(manager.GetImage(u"curve"), nullptr);
  EXPECT_EQ(manager.GetIconPathOfImage(u"Plot"), CString(u"Plot.png"));

  // A copy of the manager has images of its own with the same inclusions.
  COVReportManager copy;
  copy.Duplicate(&manager);
  ASSERT_EQ(copy.m_images.size(), 2u);
  EXPECT_NE(copy.GetImage(u"Plot"), plot);
  EXPECT_EQ(Names(copy, u"Copy", 5), (std::vector<CString>{u"Plot", u"Curve"}));
  CStringList names;
  copy.GetImageNameList(names, 1);
  EXPECT_EQ(names.GetCount(), 2);
}

}  // namespace
