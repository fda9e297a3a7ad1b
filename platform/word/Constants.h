#pragma once
// Word's enumeration values as the automation model numbers them.

namespace Word {

// WdUnits
inline constexpr int wdCharacter = 1;
inline constexpr int wdWord = 2;
inline constexpr int wdSentence = 3;
inline constexpr int wdParagraph = 4;
inline constexpr int wdLine = 5;
inline constexpr int wdStory = 6;
inline constexpr int wdScreen = 7;
inline constexpr int wdSection = 8;
inline constexpr int wdColumn = 9;
inline constexpr int wdRow = 10;
inline constexpr int wdWindow = 11;
inline constexpr int wdCell = 12;
inline constexpr int wdCharacterFormatting = 13;
inline constexpr int wdParagraphFormatting = 14;
inline constexpr int wdTable = 15;
inline constexpr int wdItem = 16;

// WdMovementType
inline constexpr int wdMove = 0;
inline constexpr int wdExtend = 1;

// WdCollapseDirection
inline constexpr int wdCollapseStart = 1;
inline constexpr int wdCollapseEnd = 0;

// WdGoToItem / WdGoToDirection
inline constexpr int wdGoToBookmark = -1;
inline constexpr int wdGoToSection = 0;
inline constexpr int wdGoToPage = 1;
inline constexpr int wdGoToTable = 2;
inline constexpr int wdGoToLine = 3;
inline constexpr int wdGoToHeading = 11;
inline constexpr int wdGoToFirst = 1;
inline constexpr int wdGoToLast = -1;
inline constexpr int wdGoToNext = 2;
inline constexpr int wdGoToRelative = 2;
inline constexpr int wdGoToPrevious = 3;
inline constexpr int wdGoToAbsolute = 1;

// WdFindWrap
inline constexpr int wdFindStop = 0;
inline constexpr int wdFindContinue = 1;
inline constexpr int wdFindAsk = 2;

// WdReplace
inline constexpr int wdReplaceNone = 0;
inline constexpr int wdReplaceOne = 1;
inline constexpr int wdReplaceAll = 2;

// WdInformation
inline constexpr int wdActiveEndAdjustedPageNumber = 1;
inline constexpr int wdActiveEndSectionNumber = 2;
inline constexpr int wdActiveEndPageNumber = 3;
inline constexpr int wdNumberOfPagesInDocument = 4;
inline constexpr int wdFirstCharacterColumnNumber = 9;
inline constexpr int wdFirstCharacterLineNumber = 10;
inline constexpr int wdWithInTable = 12;
inline constexpr int wdStartOfRangeRowNumber = 13;
inline constexpr int wdEndOfRangeRowNumber = 14;
inline constexpr int wdMaximumNumberOfRows = 15;
inline constexpr int wdMaximumNumberOfColumns = 18;
inline constexpr int wdStartOfRangeColumnNumber = 16;
inline constexpr int wdEndOfRangeColumnNumber = 17;
inline constexpr int wdInHeaderFooter = 28;

// WdPaperSize
inline constexpr int wdPaper10x14 = 0;
inline constexpr int wdPaper11x17 = 1;
inline constexpr int wdPaperLetter = 2;
inline constexpr int wdPaperLetterSmall = 3;
inline constexpr int wdPaperLegal = 4;
inline constexpr int wdPaperExecutive = 5;
inline constexpr int wdPaperA3 = 6;
inline constexpr int wdPaperA4 = 7;
inline constexpr int wdPaperA4Small = 8;
inline constexpr int wdPaperA5 = 9;
inline constexpr int wdPaperCustom = 41;

// WdOrientation
inline constexpr int wdOrientPortrait = 0;
inline constexpr int wdOrientLandscape = 1;

// WdViewType
inline constexpr int wdNormalView = 1;
inline constexpr int wdOutlineView = 2;
inline constexpr int wdPrintView = 3;
inline constexpr int wdPrintPreview = 4;
inline constexpr int wdMasterView = 5;
inline constexpr int wdWebView = 6;
inline constexpr int wdReadingView = 7;

// WdSeekView
inline constexpr int wdSeekMainDocument = 0;
inline constexpr int wdSeekPrimaryHeader = 1;
inline constexpr int wdSeekFirstPageHeader = 2;
inline constexpr int wdSeekEvenPagesHeader = 3;
inline constexpr int wdSeekPrimaryFooter = 4;
inline constexpr int wdSeekFirstPageFooter = 5;
inline constexpr int wdSeekEvenPagesFooter = 6;
inline constexpr int wdSeekFootnotes = 7;
inline constexpr int wdSeekEndnotes = 8;
inline constexpr int wdSeekCurrentPageHeader = 9;
inline constexpr int wdSeekCurrentPageFooter = 10;

// WdAutoFitBehavior / WdDefaultTableBehavior
inline constexpr int wdAutoFitFixed = 0;
inline constexpr int wdAutoFitContent = 1;
inline constexpr int wdAutoFitWindow = 2;
inline constexpr int wdWord8TableBehavior = 0;
inline constexpr int wdWord9TableBehavior = 1;

// WdDeleteCells
inline constexpr int wdDeleteCellsShiftLeft = 0;
inline constexpr int wdDeleteCellsShiftUp = 1;
inline constexpr int wdDeleteCellsEntireRow = 2;
inline constexpr int wdDeleteCellsEntireColumn = 3;

// WdSaveFormat
inline constexpr int wdFormatDocument = 0;
inline constexpr int wdFormatTemplate = 1;
inline constexpr int wdFormatText = 2;
inline constexpr int wdFormatXMLDocument = 12;
inline constexpr int wdFormatXMLTemplate = 14;
inline constexpr int wdFormatDocumentDefault = 16;
inline constexpr int wdFormatPDF = 17;

// WdSaveOptions
inline constexpr int wdDoNotSaveChanges = 0;
inline constexpr int wdSaveChanges = -1;
inline constexpr int wdPromptToSaveChanges = -2;

// WdDefaultFilePath
inline constexpr int wdDocumentsPath = 0;
inline constexpr int wdPicturesPath = 1;
inline constexpr int wdUserTemplatesPath = 2;
inline constexpr int wdWorkgroupTemplatesPath = 3;
inline constexpr int wdUserOptionsPath = 4;
inline constexpr int wdAutoRecoverPath = 5;
inline constexpr int wdToolsPath = 6;
inline constexpr int wdTutorialPath = 7;
inline constexpr int wdStartupPath = 8;
inline constexpr int wdProgramPath = 9;
inline constexpr int wdGraphicsFiltersPath = 10;
inline constexpr int wdTextConvertersPath = 11;
inline constexpr int wdProofingToolsPath = 12;
inline constexpr int wdTempFilePath = 13;
inline constexpr int wdCurrentFolderPath = 14;
inline constexpr int wdStyleGalleryPath = 15;
inline constexpr int wdBorderArtPath = 19;

// WdColor (BGR longs)
inline constexpr int wdColorAutomatic = -16777216;
inline constexpr int wdColorBlack = 0;
inline constexpr int wdColorWhite = 16777215;
inline constexpr int wdColorRed = 255;
inline constexpr int wdColorGreen = 32768;
inline constexpr int wdColorBlue = 16711680;
inline constexpr int wdColorGray25 = 12632256;

// WdTextureIndex
inline constexpr int wdTextureNone = 0;
inline constexpr int wdTextureSolid = 1000;

// WdStoryType
inline constexpr int wdMainTextStory = 1;
inline constexpr int wdEvenPagesHeaderStory = 6;
inline constexpr int wdPrimaryHeaderStory = 7;
inline constexpr int wdEvenPagesFooterStory = 8;
inline constexpr int wdPrimaryFooterStory = 9;
inline constexpr int wdFirstPageHeaderStory = 10;
inline constexpr int wdFirstPageFooterStory = 11;

// WdInlineShapeType
inline constexpr int wdInlineShapeEmbeddedOLEObject = 1;
inline constexpr int wdInlineShapeLinkedOLEObject = 2;
inline constexpr int wdInlineShapePicture = 3;
inline constexpr int wdInlineShapeLinkedPicture = 4;

// WdSelectionType
inline constexpr int wdNoSelection = 0;
inline constexpr int wdSelectionIP = 1;
inline constexpr int wdSelectionNormal = 2;
inline constexpr int wdSelectionColumn = 5;
inline constexpr int wdSelectionRow = 6;

// WdTableFormat / WdHeaderFooterIndex
inline constexpr int wdHeaderFooterPrimary = 1;
inline constexpr int wdHeaderFooterFirstPage = 2;
inline constexpr int wdHeaderFooterEvenPages = 3;

}  // namespace Word
