#include "Tools/formats/vniwork13/registry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "KNArchives.pb.h"
#include "KNCommandArchives.pb.h"
#include "TNArchives.pb.h"
#include "TNCommandArchives.pb.h"
#include "TPArchives.pb.h"
#include "TPCommandArchives.pb.h"
#include "TSAArchives.pb.h"
#include "TSCEArchives.pb.h"
#include "TSCHArchives.Common.pb.h"
#include "TSCHArchives.pb.h"
#include "TSCHCommandArchives.pb.h"
#include "TSCHPreUFFArchives.pb.h"
#include "TSDArchives.pb.h"
#include "TSDCommandArchives.pb.h"
#include "TSKArchives.pb.h"
#include "TSPArchiveMessages.pb.h"
#include "TSPMessages.pb.h"
#include "TSSArchives.pb.h"
#include "TSTArchives.pb.h"
#include "TSTCommandArchives.pb.h"
#include "TSTStylePropertyArchiving.pb.h"
#include "TSWPArchives.pb.h"
#include "TSWPCommandArchives.pb.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;

// Get rows: what each registry can build, in ascending order of the id.

struct Row {
  int type;
  Message* (*create)();
};

template <typename MessageClass>
Message* create() {
  return new MessageClass;
}

// clang-format off
constexpr Row kCommonRows[] = {
    {  200, create<TSK::DocumentArchive>},
    {  201, create<TSK::CommandHistory>},
    {  202, create<TSK::CommandGroupArchive>},
    {  203, create<TSK::CommandContainerArchive>},
    {  205, create<TSK::TreeNode>},
    {  206, create<TSK::ProgressiveCommandGroupArchive>},
    {  210, create<TSK::ViewStateArchive>},
    {  211, create<TSK::DocumentSupportArchive>},
    {  212, create<TSK::AnnotationAuthorArchive>},
    {  213, create<TSK::AnnotationAuthorStorageArchive>},
    {  215, create<TSK::SetAnnotationAuthorColorCommandArchive>},
    {  400, create<TSS::StyleArchive>},
    {  401, create<TSS::StylesheetArchive>},
    {  402, create<TSS::ThemeArchive>},
    {  410, create<TSS::ApplyThemeCommandArchive>},
    {  411, create<TSS::ApplyThemeChildCommandArchive>},
    {  412, create<TSS::StyleUpdatePropertyMapCommandArchive>},
    {  413, create<TSS::ThemeReplacePresetCommandArchive>},
    {  414, create<TSS::ThemeAddStylePresetCommandArchive>},
    {  415, create<TSS::ThemeRemoveStylePresetCommandArchive>},
    {  416, create<TSS::ThemeReplaceColorPresetCommandArchive>},
    {  417, create<TSS::ThemeMovePresetCommandArchive>},
    {  600, create<TSA::DocumentArchive>},
    {  601, create<TSA::FunctionBrowserStateArchive>},
    {  602, create<TSA::PropagatePresetCommandArchive>},
    { 2001, create<TSWP::StorageArchive>},
    { 2002, create<TSWP::SelectionArchive>},
    { 2003, create<TSWP::DrawableAttachmentArchive>},
    { 2004, create<TSWP::TextualAttachmentArchive>},
    { 2005, create<TSWP::StorageArchive>},
    { 2006, create<TSWP::UIGraphicalAttachment>},
    { 2007, create<TSWP::TextualAttachmentArchive>},
    { 2008, create<TSWP::FootnoteReferenceAttachmentArchive>},
    { 2009, create<TSWP::TextualAttachmentArchive>},
    { 2010, create<TSWP::TSWPTOCPageNumberAttachmentArchive>},
    { 2011, create<TSWP::ShapeInfoArchive>},
    { 2013, create<TSWP::HighlightArchive>},
    { 2014, create<TSWP::CommentInfoArchive>},
    { 2021, create<TSWP::CharacterStyleArchive>},
    { 2022, create<TSWP::ParagraphStyleArchive>},
    { 2023, create<TSWP::ListStyleArchive>},
    { 2024, create<TSWP::ColumnStyleArchive>},
    { 2025, create<TSWP::ShapeStyleArchive>},
    { 2026, create<TSWP::TOCEntryStyleArchive>},
    { 2031, create<TSWP::PlaceholderSmartFieldArchive>},
    { 2032, create<TSWP::HyperlinkFieldArchive>},
    { 2033, create<TSWP::FilenameSmartFieldArchive>},
    { 2034, create<TSWP::DateTimeSmartFieldArchive>},
    { 2035, create<TSWP::BookmarkFieldArchive>},
    { 2036, create<TSWP::MergeSmartFieldArchive>},
    { 2037, create<TSWP::CitationRecordArchive>},
    { 2038, create<TSWP::CitationSmartFieldArchive>},
    { 2039, create<TSWP::UnsupportedHyperlinkFieldArchive>},
    { 2040, create<TSWP::BibliographySmartFieldArchive>},
    { 2041, create<TSWP::TOCSmartFieldArchive>},
    { 2042, create<TSWP::RubyFieldArchive>},
    { 2043, create<TSWP::NumberAttachmentArchive>},
    { 2050, create<TSWP::TextStylePresetArchive>},
    { 2051, create<TSWP::TOCSettingsArchive>},
    { 2052, create<TSWP::TOCEntryInstanceArchive>},
    { 2060, create<TSWP::ChangeArchive>},
    { 2061, create<TSK::DeprecatedChangeAuthorArchive>},
    { 2062, create<TSWP::ChangeSessionArchive>},
    { 2101, create<TSWP::TextCommandArchive>},
    { 2107, create<TSWP::ApplyPlaceholderTextCommandArchive>},
    { 2116, create<TSWP::ApplyRubyTextCommandArchive>},
    { 2118, create<TSWP::ModifyRubyTextCommandArchive>},
    { 2119, create<TSWP::UpdateDateTimeFieldCommandArchive>},
    { 2120, create<TSWP::ModifyTOCSettingsBaseCommandArchive>},
    { 2121, create<TSWP::ModifyTOCSettingsForTOCInfoCommandArchive>},
    { 2122, create<TSWP::ModifyTOCSettingsPresetForThemeCommandArchive>},
    { 2206, create<TSWP::AnchorAttachmentCommandArchive>},
    { 2207, create<TSWP::TextApplyThemeCommandArchive>},
    { 2231, create<TSWP::ShapeApplyPresetCommandArchive>},
    { 2240, create<TSWP::TOCInfoArchive>},
    { 2241, create<TSWP::TOCAttachmentArchive>},
    { 2242, create<TSWP::TOCLayoutHintArchive>},
    { 2400, create<TSWP::StyleBaseCommandArchive>},
    { 2401, create<TSWP::StyleCreateCommandArchive>},
    { 2402, create<TSWP::StyleRenameCommandArchive>},
    { 2403, create<TSWP::StyleUpdateCommandArchive>},
    { 2404, create<TSWP::StyleDeleteCommandArchive>},
    { 2405, create<TSWP::StyleReorderCommandArchive>},
    { 2406, create<TSWP::StyleUpdatePropertyMapCommandArchive>},
    { 3002, create<TSD::DrawableArchive>},
    { 3003, create<TSD::ContainerArchive>},
    { 3004, create<TSD::ShapeArchive>},
    { 3005, create<TSD::ImageArchive>},
    { 3006, create<TSD::MaskArchive>},
    { 3007, create<TSD::MovieArchive>},
    { 3008, create<TSD::GroupArchive>},
    { 3009, create<TSD::ConnectionLineArchive>},
    { 3015, create<TSD::ShapeStyleArchive>},
    { 3016, create<TSD::MediaStyleArchive>},
    { 3020, create<TSD::DrawablesCommandGroupArchive>},
    { 3021, create<TSD::InfoGeometryCommandArchive>},
    { 3022, create<TSD::DrawablePathSourceCommandArchive>},
    { 3023, create<TSD::ShapePathSourceFlipCommandArchive>},
    { 3024, create<TSD::ImageMaskCommandArchive>},
    { 3025, create<TSD::ImageMediaCommandArchive>},
    { 3026, create<TSD::ImageReplaceCommandArchive>},
    { 3027, create<TSD::MediaOriginalSizeCommandArchive>},
    { 3028, create<TSD::ShapeStyleSetValueCommandArchive>},
    { 3030, create<TSD::MediaStyleSetValueCommandArchive>},
    { 3031, create<TSD::ShapeApplyPresetCommandArchive>},
    { 3032, create<TSD::MediaApplyPresetCommandArchive>},
    { 3033, create<TSD::DrawableApplyThemeCommandArchive>},
    { 3034, create<TSD::MovieSetValueCommandArchive>},
    { 3036, create<TSD::ExteriorTextWrapCommandArchive>},
    { 3037, create<TSD::MediaFlagsCommandArchive>},
    { 3038, create<TSD::GroupDrawablesCommandArchive>},
    { 3039, create<TSD::UngroupGroupCommandArchive>},
    { 3040, create<TSD::DrawableHyperlinkCommandArchive>},
    { 3041, create<TSD::ConnectionLineConnectCommandArchive>},
    { 3042, create<TSD::InstantAlphaCommandArchive>},
    { 3043, create<TSD::DrawableLockCommandArchive>},
    { 3045, create<TSD::CanvasSelectionArchive>},
    { 3047, create<TSD::GuideStorageArchive>},
    { 3048, create<TSD::StyledInfoSetStyleCommandArchive>},
    { 3049, create<TSD::DrawableInfoCommentCommandArchive>},
    { 3050, create<TSD::GuideCommandArchive>},
    { 3051, create<TSD::DrawableAspectRatioLockedCommandArchive>},
    { 3052, create<TSD::ContainerRemoveChildrenCommandArchive>},
    { 3053, create<TSD::ContainerInsertChildrenCommandArchive>},
    { 3054, create<TSD::ContainerReorderChildrenCommandArchive>},
    { 3055, create<TSD::ImageAdjustmentsCommandArchive>},
    { 3056, create<TSD::CommentStorageArchive>},
    { 3057, create<TSD::ThemeReplaceFillPresetCommandArchive>},
    { 3058, create<TSD::DrawableAccessibilityDescriptionCommandArchive>},
    { 3059, create<TSD::PasteStyleCommandArchive>},
    { 4000, create<TSCE::CalculationEngineArchive>},
    { 4001, create<TSCE::FormulaRewriteCommandArchive>},
    { 4002, create<TSCE::TrackedReferencesRewriteCommandArchive>},
    { 4003, create<TSCE::NamedReferenceManagerArchive>},
    { 4004, create<TSCE::ReferenceTrackerArchive>},
    { 4005, create<TSCE::TrackedReferenceArchive>},
    { 5000, create<TSCH::PreUFF::ChartInfoArchive>},
    { 5002, create<TSCH::PreUFF::ChartGridArchive>},
    { 5004, create<TSCH::ChartMediatorArchive>},
    { 5010, create<TSCH::PreUFF::ChartStyleArchive>},
    { 5011, create<TSCH::PreUFF::ChartSeriesStyleArchive>},
    { 5012, create<TSCH::PreUFF::ChartAxisStyleArchive>},
    { 5013, create<TSCH::PreUFF::LegendStyleArchive>},
    { 5014, create<TSCH::PreUFF::ChartNonStyleArchive>},
    { 5015, create<TSCH::PreUFF::ChartSeriesNonStyleArchive>},
    { 5016, create<TSCH::PreUFF::ChartAxisNonStyleArchive>},
    { 5017, create<TSCH::PreUFF::LegendNonStyleArchive>},
    { 5020, create<TSCH::ChartStylePreset>},
    { 5021, create<TSCH::ChartDrawableArchive>},
    { 5022, create<TSCH::ChartStyleArchive>},
    { 5023, create<TSCH::ChartNonStyleArchive>},
    { 5024, create<TSCH::LegendStyleArchive>},
    { 5025, create<TSCH::LegendNonStyleArchive>},
    { 5026, create<TSCH::ChartAxisStyleArchive>},
    { 5027, create<TSCH::ChartAxisNonStyleArchive>},
    { 5028, create<TSCH::ChartSeriesStyleArchive>},
    { 5029, create<TSCH::ChartSeriesNonStyleArchive>},
    { 5103, create<TSCH::CommandSetChartTypeArchive>},
    { 5104, create<TSCH::CommandSetSeriesNameArchive>},
    { 5105, create<TSCH::CommandSetCategoryNameArchive>},
    { 5107, create<TSCH::CommandSetScatterFormatArchive>},
    { 5108, create<TSCH::CommandSetLegendFrameArchive>},
    { 5109, create<TSCH::CommandSetGridValueArchive>},
    { 5110, create<TSCH::CommandSetGridDirectionArchive>},
    { 5115, create<TSCH::CommandAddGridRowsArchive>},
    { 5116, create<TSCH::CommandAddGridColumnsArchive>},
    { 5118, create<TSCH::CommandMoveGridRowsArchive>},
    { 5119, create<TSCH::CommandMoveGridColumnsArchive>},
    { 5120, create<TSCH::CommandDeleteGridRowsArchive>},
    { 5121, create<TSCH::CommandDeleteGridColumnsArchive>},
    { 5122, create<TSCH::CommandSetPieWedgeExplosion>},
    { 5123, create<TSCH::CommandStyleSwapArchive>},
    { 5124, create<TSCH::CommandChartApplyTheme>},
    { 5125, create<TSCH::CommandChartApplyPreset>},
    { 5126, create<TSCH::ChartCommandArchive>},
    { 5127, create<TSCH::CommandReplaceGridValuesArchive>},
    { 5129, create<TSCH::StylePasteboardDataArchive>},
    { 5130, create<TSCH::CommandSetMultiDataSetIndexArchive>},
    { 5131, create<TSCH::CommandReplaceThemePresetArchive>},
    { 5132, create<TSCH::CommandInvalidateWPCaches>},
    { 6000, create<TST::TableInfoArchive>},
    { 6001, create<TST::TableModelArchive>},
    { 6002, create<TST::Tile>},
    { 6003, create<TST::TableStyleArchive>},
    { 6004, create<TST::CellStyleArchive>},
    { 6005, create<TST::TableDataList>},
    { 6006, create<TST::HeaderStorageBucket>},
    { 6007, create<TST::WPTableInfoArchive>},
    { 6008, create<TST::TableStylePresetArchive>},
    { 6009, create<TST::TableStrokePresetArchive>},
    { 6010, create<TST::ConditionalStyleSetArchive>},
    { 6100, create<TST::TableCommandArchive>},
    { 6101, create<TST::CommandDeleteCellsArchive>},
    { 6102, create<TST::CommandInsertColumnsOrRowsArchive>},
    { 6103, create<TST::CommandRemoveColumnsOrRowsArchive>},
    { 6107, create<TST::CommandSetTableNameArchive>},
    { 6108, create<TST::CommandStyleCellsArchive>},
    { 6111, create<TST::CommandChangeFreezeHeaderStateArchive>},
    { 6114, create<TST::CommandSetTableNameEnabledArchive>},
    { 6117, create<TST::CommandApplyTableStylePresetArchive>},
    { 6120, create<TST::CommandSetRepeatingHeaderEnabledArchive>},
    { 6123, create<TST::CommandSortArchive>},
    { 6125, create<TST::CommandStyleTableArchive>},
    { 6126, create<TST::CommandSetNumberOfDecimalPlacesArchive>},
    { 6127, create<TST::CommandSetShowThousandsSeparatorArchive>},
    { 6128, create<TST::CommandSetNegativeNumberStyleArchive>},
    { 6129, create<TST::CommandSetFractionAccuracyArchive>},
    { 6131, create<TST::CommandSetCurrencyCodeArchive>},
    { 6132, create<TST::CommandSetUseAccountingStyleArchive>},
    { 6136, create<TST::CommandSetTableFontNameArchive>},
    { 6137, create<TST::CommandSetTableFontSizeArchive>},
    { 6142, create<TST::CommandSetTableNameHeightArchive>},
    { 6144, create<TST::MergeRegionMapArchive>},
    { 6145, create<TST::CommandHideShowArchive>},
    { 6146, create<TST::CommandSetBaseArchive>},
    { 6147, create<TST::CommandSetBasePlacesArchive>},
    { 6148, create<TST::CommandSetBaseUseMinusSignArchive>},
    { 6179, create<TST::FormulaEqualsTokenAttachmentArchive>},
    { 6181, create<TST::TokenAttachmentArchive>},
    { 6182, create<TST::ExpressionNodeArchive>},
    { 6183, create<TST::BooleanNodeArchive>},
    { 6184, create<TST::NumberNodeArchive>},
    { 6185, create<TST::StringNodeArchive>},
    { 6186, create<TST::ArrayNodeArchive>},
    { 6187, create<TST::ListNodeArchive>},
    { 6188, create<TST::OperatorNodeArchive>},
    { 6189, create<TST::FunctionNodeArchive>},
    { 6190, create<TST::DateNodeArchive>},
    { 6191, create<TST::ReferenceNodeArchive>},
    { 6192, create<TST::DurationNodeArchive>},
    { 6193, create<TST::ArgumentPlaceholderNodeArchive>},
    { 6194, create<TST::PostfixOperatorNodeArchive>},
    { 6195, create<TST::PrefixOperatorNodeArchive>},
    { 6196, create<TST::FunctionEndNodeArchive>},
    { 6197, create<TST::EmptyExpressionNodeArchive>},
    { 6198, create<TST::LayoutHintArchive>},
    { 6199, create<TST::CompletionTokenAttachmentArchive>},
    { 6200, create<TST::FormulaEditingCommandGroupArchive>},
    { 6201, create<TST::TableDataList>},
    { 6204, create<TST::HiddenStateFormulaOwnerArchive>},
    { 6205, create<TST::CommandSetAutomaticDurationUnitsArchive>},
    { 6206, create<TST::PopUpMenuModel>},
    { 6218, create<TST::RichTextPayloadArchive>},
    { 6220, create<TST::FilterSetArchive>},
    { 6221, create<TST::CommandSetFiltersEnabledArchive>},
    { 6224, create<TST::CommandRewriteFilterFormulasForTableResizeArchive>},
    { 6226, create<TST::CommandTextPreflightInsertCellArchive>},
    { 6227, create<TST::FormulaEditingCommandSelectionBehaviorArchive>},
    { 6228, create<TST::CommandDeleteCellContentsArchive>},
    { 6229, create<TST::CommandPostflightSetCellArchive>},
    { 6235, create<TST::IdentifierNodeArchive>},
    { 6238, create<TST::CommandSetDateTimeFormatArchive>},
    { 6239, create<TST::TableCommandSelectionBehaviorArchive>},
    { 6244, create<TST::CommandApplyCellCommentArchive>},
    { 6246, create<TST::CommandSetFormulaTokenizationArchive>},
    { 6247, create<TST::TableStyleNetworkArchive>},
    { 6250, create<TST::CommandSetFilterSetTypeArchive>},
    { 6255, create<TST::CommandSetTextStyleArchive>},
    {11000, create<TSP::PasteboardObject>},
    {11006, create<TSP::PackageMetadata>},
    {11007, create<TSP::PasteboardMetadata>},
    {11008, create<TSP::ObjectContainer>},
};

constexpr Row kKeynoteRows[] = {
    {    1, create<KN::DocumentArchive>},
    {    2, create<KN::ShowArchive>},
    {    3, create<KN::UIStateArchive>},
    {    4, create<KN::SlideNodeArchive>},
    {    5, create<KN::SlideArchive>},
    {    6, create<KN::SlideArchive>},
    {    7, create<KN::PlaceholderArchive>},
    {    8, create<KN::BuildArchive>},
    {    9, create<KN::SlideStyleArchive>},
    {   10, create<KN::ThemeArchive>},
    {   11, create<KN::PasteboardNativeStorageArchive>},
    {   12, create<KN::PlaceholderArchive>},
    {   14, create<TSWP::TextualAttachmentArchive>},
    {   15, create<KN::NoteArchive>},
    {   16, create<KN::RecordingArchive>},
    {   17, create<KN::RecordingEventTrackArchive>},
    {   18, create<KN::RecordingMovieTrackArchive>},
    {   19, create<KN::ClassicStylesheetRecordArchive>},
    {   20, create<KN::ClassicThemeRecordArchive>},
    {   21, create<KN::Soundtrack>},
    {   22, create<KN::SlideNumberAttachmentArchive>},
    {   23, create<KN::DesktopUILayoutArchive>},
    {   24, create<KN::CanvasSelectionArchive>},
    {   25, create<KN::SlideCollectionSelectionArchive>},
    {  100, create<KN::CommandBuildSetValueArchive>},
    {  101, create<KN::CommandShowInsertSlideArchive>},
    {  102, create<KN::CommandShowMoveSlideArchive>},
    {  103, create<KN::CommandShowRemoveSlideArchive>},
    {  104, create<KN::CommandSlideInsertDrawablesArchive>},
    {  105, create<KN::CommandSlideRemoveDrawableArchive>},
    {  106, create<KN::CommandSlideNodeSetPropertyArchive>},
    {  107, create<KN::CommandSlideInsertBuildArchive>},
    {  109, create<KN::CommandSlideRemoveBuildArchive>},
    {  110, create<KN::CommandSlideInsertBuildChunkArchive>},
    {  112, create<KN::CommandSlideRemoveBuildChunkArchive>},
    {  114, create<KN::CommandTransitionSetValueArchive>},
    {  115, create<KN::UIStateCommandGroupArchive>},
    {  118, create<KN::CommandSlideMoveDrawableZOrderArchive>},
    {  119, create<KN::CommandChangeMasterSlideArchive>},
    {  123, create<KN::CommandShowSetSlideNumberVisibilityArchive>},
    {  124, create<KN::CommandShowSetValueArchive>},
    {  128, create<KN::CommandShowMarkOutOfSyncRecordingArchive>},
    {  129, create<KN::CommandShowRemoveRecordingArchive>},
    {  130, create<KN::CommandShowReplaceRecordingArchive>},
    {  131, create<KN::CommandShowSetSoundtrack>},
    {  132, create<KN::CommandSoundtrackSetValue>},
    {  134, create<KN::CommandMoveMastersArchive>},
    {  135, create<KN::CommandInsertMasterArchive>},
    {  136, create<KN::CommandSlideSetStyleArchive>},
    {  137, create<KN::CommandSlideSetPlaceholdersForTagsArchive>},
    {  138, create<KN::CommandBuildChunkSetValueArchive>},
    {  139, create<KN::CommandSlideMoveBuildChunksArchive>},
    {  140, create<KN::CommandRemoveMasterArchive>},
    {  141, create<KN::CommandRenameMasterArchive>},
    {  142, create<KN::CommandMasterSetThumbnailTextArchive>},
    {  143, create<KN::CommandShowChangeThemeArchive>},
    {  144, create<KN::CommandSlidePrimitiveSetMasterArchive>},
    {  145, create<KN::CommandMasterSetBodyStylesArchive>},
    {  146, create<KN::CommandSlideReapplyMasterArchive>},
    {  148, create<KN::ChartInfoGeometryCommandArchive>},
    {10011, create<TSWP::SectionPlaceholderArchive>},
};

constexpr Row kNumbersRows[] = {
    {    1, create<TN::DocumentArchive>},
    {    2, create<TN::SheetArchive>},
    {    3, create<TN::FormBasedSheetArchive>},
    {    7, create<TN::PlaceholderArchive>},
    {10011, create<TSWP::SectionPlaceholderArchive>},
    {12002, create<TN::CommandSheetInsertDrawablesArchive>},
    {12003, create<TN::CommandDocumentInsertSheetArchive>},
    {12004, create<TN::CommandDocumentRemoveSheetArchive>},
    {12005, create<TN::CommandSetSheetNameArchive>},
    {12006, create<TN::ChartMediatorArchive>},
    {12008, create<TN::CommandDocumentReorderSheetArchive>},
    {12009, create<TN::ThemeArchive>},
    {12011, create<TN::CommandReorderSidebarItemChildrenAchive>},
    {12012, create<TN::CommandSheetRemoveDrawablesArchive>},
    {12013, create<TN::CommandSheetMoveDrawableZOrderArchive>},
    {12014, create<TN::CommandChartMediatorSetEditingState>},
    {12015, create<TN::CommandFormChooseTargetTableArchive>},
    {12016, create<TN::CommandChartMediatorUpdateForEntityDelete>},
    {12017, create<TN::CommandSetPageOrientationArchive>},
    {12018, create<TN::CommandSetContentScaleArchive>},
    {12019, create<TN::CommandSetShowPageNumbersValueArchive>},
    {12024, create<TN::UndoRedoStateArchive>},
    {12026, create<TN::UIStateArchive>},
    {12028, create<TN::SheetSelectionArchive>},
};

constexpr Row kPagesRows[] = {
    {    7, create<TP::PlaceholderArchive>},
    {10000, create<TP::DocumentArchive>},
    {10001, create<TP::ThemeArchive>},
    {10010, create<TP::FloatingDrawablesArchive>},
    {10011, create<TP::SectionArchive>},
    {10012, create<TP::SettingsArchive>},
    {10015, create<TP::DrawablesZOrderArchive>},
    {10101, create<TP::InsertDrawablesCommandArchive>},
    {10102, create<TP::RemoveDrawablesCommandArchive>},
    {10110, create<TP::MoveDrawablesAttachedCommandArchive>},
    {10111, create<TP::MoveDrawablesFloatingCommandArchive>},
    {10112, create<TP::MoveInlineDrawableAnchoredCommandArchive>},
    {10113, create<TP::InsertFootnoteCommandArchive>},
    {10114, create<TP::ChangeFootnoteFormatCommandArchive>},
    {10115, create<TP::ChangeFootnoteKindCommandArchive>},
    {10116, create<TP::ChangeFootnoteNumberingCommandArchive>},
    {10117, create<TP::ToggleBodyLayoutDirectionCommandArchive>},
    {10118, create<TP::ChangeFootnoteSpacingCommandArchive>},
    {10119, create<TP::MoveAnchoredDrawableInlineCommandArchive>},
    {10120, create<TP::ChangeSectionMarginsCommandArchive>},
    {10125, create<TP::InsertMasterDrawablesCommandArchive>},
    {10126, create<TP::RemoveMasterDrawablesCommandArchive>},
    {10127, create<TP::PasteMasterDrawablesCommandArchive>},
    {10130, create<TP::MoveDrawablesPageIndexCommandArchive>},
    {10131, create<TP::LayoutStateArchive>},
    {10132, create<TP::CanvasSelectionArchive>},
    {10133, create<TP::ViewStateArchive>},
    {10140, create<TP::MoveMasterDrawableZOrderCommandArchive>},
    {10143, create<TP::PageMasterArchive>},
    {10147, create<TP::UIStateArchive>},
    {10149, create<TP::TrackChangesCommandArchive>},
    {10152, create<TP::InsertSectionBreakCommandArchive>},
    {10153, create<TP::DeleteSectionCommandArchive>},
    {10154, create<TP::ReplaceSectionCommandArchive>},
    {10155, create<TP::ChangeSectionPropertyCommandArchive>},
    {10157, create<TP::PauseChangeTrackingCommandArchive>},
};

// clang-format on

template <std::size_t N>
constexpr bool isAscending(const Row (&rows)[N]) {
  return std::ranges::adjacent_find(rows, std::ranges::greater_equal{}, &Row::type) ==
         std::end(rows);
}
static_assert(isAscending(kCommonRows) && std::size(kCommonRows) == 262);
static_assert(isAscending(kKeynoteRows) && std::size(kKeynoteRows) == 61);
static_assert(isAscending(kNumbersRows) && std::size(kNumbersRows) == 24);
static_assert(isAscending(kPagesRows) && std::size(kPagesRows) == 36);

template <std::size_t N>
Message* build(const Row (&rows)[N], int type) {
  const Row* row = std::ranges::lower_bound(rows, type, {}, &Row::type);
  return row != std::end(rows) && row->type == type ? row->create() : nullptr;
}

// The application wins over the common registry.
Message* layered(Message* own, int type) {
  return own != nullptr ? own : getCommonRegistryMessage(type);
}

}  // namespace

std::vector<IWorkRegistryType> getAllRegistryTypes() {
  return {CommonRegistry, KeynoteRegistry, NumbersRegistry, PagesRegistry};
}

Message* getCommonRegistryMessage(int type) { return build(kCommonRows, type); }
Message* getKeynoteRegistryMessage(int type) { return build(kKeynoteRows, type); }
Message* getNumbersRegistryMessage(int type) { return build(kNumbersRows, type); }
Message* getPagesRegistryMessage(int type) { return build(kPagesRows, type); }

Message* getKeynoteMessage(int type) { return layered(getKeynoteRegistryMessage(type), type); }
Message* getNumbersMessage(int type) { return layered(getNumbersRegistryMessage(type), type); }
Message* getPagesMessage(int type) { return layered(getPagesRegistryMessage(type), type); }

}  // namespace vn::iwork13
