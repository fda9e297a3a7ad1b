#pragma once
// The ids of the controls of the report dialogs, of the sections' controls and of the header's.
namespace ctl {

// ---- the report settings (dialog 13028, page 13027)
inline constexpr int kFolderBrowse = 12073;
inline constexpr int kSectionLabel = 12086;
inline constexpr int kFormatName = 12099;
inline constexpr int kFolder = 12106;
inline constexpr int kHelp = 12107;
inline constexpr int kFileName = 12109;
inline constexpr int kGrid = 12110;
inline constexpr int kPublishGroup = 12112;   // 0: the host's folder of result files, 1: the report folder
inline constexpr int kPublishFolder = 12113;  // the second button of that group
inline constexpr int kPaperGroup = 12121;     // 0 Letter, 1 A4
inline constexpr int kPaperA4 = 12122;        // the second button of that group
inline constexpr int kApply = 12015;
inline constexpr int kGenerate = 12016;
inline constexpr int kFormatCombo = 14254;
inline constexpr int kAddSection = 14265;
inline constexpr int kRemoveSection = 14266;
inline constexpr int kHideUserControls = 14273;  // hides the external-file controls of an added section
inline constexpr int kShowUserControls = 14274;  // shows them again
inline constexpr int kHiddenButton = 14275;      // hidden at start; hides them too
inline constexpr int kShowOnPublish = 14272;
inline constexpr int kGridPlaceholder = 14343;
inline constexpr int kImagesOn = 14338;
inline constexpr int kImagesAll = 14339;
inline constexpr int kImagesChosen = 14340;

// ---- the sections' controls
inline constexpr int kTitle = 14267;
inline constexpr int kCommentsOn = 14268;
inline constexpr int kComments = 14269;
inline constexpr int kDescriptionLabel = 12111;
inline constexpr int kDescription = 14320;
inline constexpr int kModelOption0 = 14285;
inline constexpr int kModelOption4 = 14291;
inline constexpr int kBeamForces = 14313;
inline constexpr int kBeamStresses = 14314;
inline constexpr int kBeamForcesChoice = 12120;
inline constexpr int kBeamStressesChoice = 12119;
inline constexpr int kResultOption = 14312;
inline constexpr int kInsertExternal = 14304;
inline constexpr int kExternalPath = 14306;
inline constexpr int kExternalBrowse = 14303;
inline constexpr int kExternalLabel = 14307;
inline constexpr int kLinkGroup = 12105;   // 0 embedded, 1 linked
inline constexpr int kLinkToFile = 12114;  // the second button of that group

// ---- the header's controls
inline constexpr int kLogoOn = 14278;
inline constexpr int kLogoPath = 14279;
inline constexpr int kLogoBrowse = 14280;
inline constexpr int kDesignerOn = 14281;
inline constexpr int kDesigner = 14282;
inline constexpr int kCompanyOn = 14283;
inline constexpr int kCompany = 14284;
inline constexpr int kAddressOn = 14321;
inline constexpr int kAddress1 = 14322;
inline constexpr int kAddress2 = 14324;
inline constexpr int kPhoneOn = 14325;
inline constexpr int kPhone = 14326;
inline constexpr int kFaxOn = 14327;
inline constexpr int kFax = 14328;
inline constexpr int kEmailOn = 14329;
inline constexpr int kEmail = 14330;

// The header's switches: a click takes the values and updates what they enable.
inline bool IsHeaderSwitch(int id) {
  return id == kLogoOn || id == kDesignerOn || id == kCompanyOn || id == kAddressOn || id == kPhoneOn ||
         id == kFaxOn || id == kEmailOn;
}

// ---- the small dialogs
inline constexpr int kImageOk = 12087;        // OK of the image and short dialogs
inline constexpr int kImagePreview = 12117;
inline constexpr int kImageGrid = 12118;
inline constexpr int kPathShown = 14332;
inline constexpr int kConclusions = 12017;
inline constexpr int kDescriptionOn = 14319;
inline constexpr int kConclusionsOn = 14341;
inline constexpr int kExtraFlag = 42780;

}  // namespace ctl
