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
#include "Tools/formats/vniwork13/layout_index.h"
#include "Tools/formats/vniwork13/registered_class.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;

// Get rows: what each registry can build, in ascending order of the id.

template <typename MessageClass>
Message* create() {
  return new MessageClass;
}

template <typename MessageClass>
constexpr RegisteredClass registered = {create<MessageClass>, kLayoutIndex<MessageClass>};

// clang-format off
constexpr RegistryRow kCommonRows[] = {
    {  200, registered<TSK::DocumentArchive>},
    {  201, registered<TSK::CommandHistory>},
    {  202, registered<TSK::CommandGroupArchive>},
    {  203, registered<TSK::CommandContainerArchive>},
    {  205, registered<TSK::TreeNode>},
    {  206, registered<TSK::ProgressiveCommandGroupArchive>},
    {  210, registered<TSK::ViewStateArchive>},
    {  211, registered<TSK::DocumentSupportArchive>},
    {  212, registered<TSK::AnnotationAuthorArchive>},
    {  213, registered<TSK::AnnotationAuthorStorageArchive>},
    {  215, registered<TSK::SetAnnotationAuthorColorCommandArchive>},
    {  400, registered<TSS::StyleArchive>},
    {  401, registered<TSS::StylesheetArchive>},
    {  402, registered<TSS::ThemeArchive>},
    {  410, registered<TSS::ApplyThemeCommandArchive>},
    {  411, registered<TSS::ApplyThemeChildCommandArchive>},
    {  412, registered<TSS::StyleUpdatePropertyMapCommandArchive>},
    {  413, registered<TSS::ThemeReplacePresetCommandArchive>},
    {  414, registered<TSS::ThemeAddStylePresetCommandArchive>},
    {  415, registered<TSS::ThemeRemoveStylePresetCommandArchive>},
    {  416, registered<TSS::ThemeReplaceColorPresetCommandArchive>},
    {  417, registered<TSS::ThemeMovePresetCommandArchive>},
    {  600, registered<TSA::DocumentArchive>},
    {  601, registered<TSA::FunctionBrowserStateArchive>},
    {  602, registered<TSA::PropagatePresetCommandArchive>},
    { 2001, registered<TSWP::StorageArchive>},
    { 2002, registered<TSWP::SelectionArchive>},
    { 2003, registered<TSWP::DrawableAttachmentArchive>},
    { 2004, registered<TSWP::TextualAttachmentArchive>},
    { 2005, registered<TSWP::StorageArchive>},
    { 2006, registered<TSWP::UIGraphicalAttachment>},
    { 2007, registered<TSWP::TextualAttachmentArchive>},
    { 2008, registered<TSWP::FootnoteReferenceAttachmentArchive>},
    { 2009, registered<TSWP::TextualAttachmentArchive>},
    { 2010, registered<TSWP::TSWPTOCPageNumberAttachmentArchive>},
    { 2011, registered<TSWP::ShapeInfoArchive>},
    { 2013, registered<TSWP::HighlightArchive>},
    { 2014, registered<TSWP::CommentInfoArchive>},
    { 2021, registered<TSWP::CharacterStyleArchive>},
    { 2022, registered<TSWP::ParagraphStyleArchive>},
    { 2023, registered<TSWP::ListStyleArchive>},
    { 2024, registered<TSWP::ColumnStyleArchive>},
    { 2025, registered<TSWP::ShapeStyleArchive>},
    { 2026, registered<TSWP::TOCEntryStyleArchive>},
    { 2031, registered<TSWP::PlaceholderSmartFieldArchive>},
    { 2032, registered<TSWP::HyperlinkFieldArchive>},
    { 2033, registered<TSWP::FilenameSmartFieldArchive>},
    { 2034, registered<TSWP::DateTimeSmartFieldArchive>},
    { 2035, registered<TSWP::BookmarkFieldArchive>},
    { 2036, registered<TSWP::MergeSmartFieldArchive>},
    { 2037, registered<TSWP::CitationRecordArchive>},
    { 2038, registered<TSWP::CitationSmartFieldArchive>},
    { 2039, registered<TSWP::UnsupportedHyperlinkFieldArchive>},
    { 2040, registered<TSWP::BibliographySmartFieldArchive>},
    { 2041, registered<TSWP::TOCSmartFieldArchive>},
    { 2042, registered<TSWP::RubyFieldArchive>},
    { 2043, registered<TSWP::NumberAttachmentArchive>},
    { 2050, registered<TSWP::TextStylePresetArchive>},
    { 2051, registered<TSWP::TOCSettingsArchive>},
    { 2052, registered<TSWP::TOCEntryInstanceArchive>},
    { 2060, registered<TSWP::ChangeArchive>},
    { 2061, registered<TSK::DeprecatedChangeAuthorArchive>},
    { 2062, registered<TSWP::ChangeSessionArchive>},
    { 2101, registered<TSWP::TextCommandArchive>},
    { 2107, registered<TSWP::ApplyPlaceholderTextCommandArchive>},
    { 2116, registered<TSWP::ApplyRubyTextCommandArchive>},
    { 2118, registered<TSWP::ModifyRubyTextCommandArchive>},
    { 2119, registered<TSWP::UpdateDateTimeFieldCommandArchive>},
    { 2120, registered<TSWP::ModifyTOCSettingsBaseCommandArchive>},
    { 2121, registered<TSWP::ModifyTOCSettingsForTOCInfoCommandArchive>},
    { 2122, registered<TSWP::ModifyTOCSettingsPresetForThemeCommandArchive>},
    { 2206, registered<TSWP::AnchorAttachmentCommandArchive>},
    { 2207, registered<TSWP::TextApplyThemeCommandArchive>},
    { 2231, registered<TSWP::ShapeApplyPresetCommandArchive>},
    { 2240, registered<TSWP::TOCInfoArchive>},
    { 2241, registered<TSWP::TOCAttachmentArchive>},
    { 2242, registered<TSWP::TOCLayoutHintArchive>},
    { 2400, registered<TSWP::StyleBaseCommandArchive>},
    { 2401, registered<TSWP::StyleCreateCommandArchive>},
    { 2402, registered<TSWP::StyleRenameCommandArchive>},
    { 2403, registered<TSWP::StyleUpdateCommandArchive>},
    { 2404, registered<TSWP::StyleDeleteCommandArchive>},
    { 2405, registered<TSWP::StyleReorderCommandArchive>},
    { 2406, registered<TSWP::StyleUpdatePropertyMapCommandArchive>},
    { 3002, registered<TSD::DrawableArchive>},
    { 3003, registered<TSD::ContainerArchive>},
    { 3004, registered<TSD::ShapeArchive>},
    { 3005, registered<TSD::ImageArchive>},
    { 3006, registered<TSD::MaskArchive>},
    { 3007, registered<TSD::MovieArchive>},
    { 3008, registered<TSD::GroupArchive>},
    { 3009, registered<TSD::ConnectionLineArchive>},
    { 3015, registered<TSD::ShapeStyleArchive>},
    { 3016, registered<TSD::MediaStyleArchive>},
    { 3020, registered<TSD::DrawablesCommandGroupArchive>},
    { 3021, registered<TSD::InfoGeometryCommandArchive>},
    { 3022, registered<TSD::DrawablePathSourceCommandArchive>},
    { 3023, registered<TSD::ShapePathSourceFlipCommandArchive>},
    { 3024, registered<TSD::ImageMaskCommandArchive>},
    { 3025, registered<TSD::ImageMediaCommandArchive>},
    { 3026, registered<TSD::ImageReplaceCommandArchive>},
    { 3027, registered<TSD::MediaOriginalSizeCommandArchive>},
    { 3028, registered<TSD::ShapeStyleSetValueCommandArchive>},
    { 3030, registered<TSD::MediaStyleSetValueCommandArchive>},
    { 3031, registered<TSD::ShapeApplyPresetCommandArchive>},
    { 3032, registered<TSD::MediaApplyPresetCommandArchive>},
    { 3033, registered<TSD::DrawableApplyThemeCommandArchive>},
    { 3034, registered<TSD::MovieSetValueCommandArchive>},
    { 3036, registered<TSD::ExteriorTextWrapCommandArchive>},
    { 3037, registered<TSD::MediaFlagsCommandArchive>},
    { 3038, registered<TSD::GroupDrawablesCommandArchive>},
    { 3039, registered<TSD::UngroupGroupCommandArchive>},
    { 3040, registered<TSD::DrawableHyperlinkCommandArchive>},
    { 3041, registered<TSD::ConnectionLineConnectCommandArchive>},
    { 3042, registered<TSD::InstantAlphaCommandArchive>},
    { 3043, registered<TSD::DrawableLockCommandArchive>},
    { 3045, registered<TSD::CanvasSelectionArchive>},
    { 3047, registered<TSD::GuideStorageArchive>},
    { 3048, registered<TSD::StyledInfoSetStyleCommandArchive>},
    { 3049, registered<TSD::DrawableInfoCommentCommandArchive>},
    { 3050, registered<TSD::GuideCommandArchive>},
    { 3051, registered<TSD::DrawableAspectRatioLockedCommandArchive>},
    { 3052, registered<TSD::ContainerRemoveChildrenCommandArchive>},
    { 3053, registered<TSD::ContainerInsertChildrenCommandArchive>},
    { 3054, registered<TSD::ContainerReorderChildrenCommandArchive>},
    { 3055, registered<TSD::ImageAdjustmentsCommandArchive>},
    { 3056, registered<TSD::CommentStorageArchive>},
    { 3057, registered<TSD::ThemeReplaceFillPresetCommandArchive>},
    { 3058, registered<TSD::DrawableAccessibilityDescriptionCommandArchive>},
    { 3059, registered<TSD::PasteStyleCommandArchive>},
    { 4000, registered<TSCE::CalculationEngineArchive>},
    { 4001, registered<TSCE::FormulaRewriteCommandArchive>},
    { 4002, registered<TSCE::TrackedReferencesRewriteCommandArchive>},
    { 4003, registered<TSCE::NamedReferenceManagerArchive>},
    { 4004, registered<TSCE::ReferenceTrackerArchive>},
    { 4005, registered<TSCE::TrackedReferenceArchive>},
    { 5000, registered<TSCH::PreUFF::ChartInfoArchive>},
    { 5002, registered<TSCH::PreUFF::ChartGridArchive>},
    { 5004, registered<TSCH::ChartMediatorArchive>},
    { 5010, registered<TSCH::PreUFF::ChartStyleArchive>},
    { 5011, registered<TSCH::PreUFF::ChartSeriesStyleArchive>},
    { 5012, registered<TSCH::PreUFF::ChartAxisStyleArchive>},
    { 5013, registered<TSCH::PreUFF::LegendStyleArchive>},
    { 5014, registered<TSCH::PreUFF::ChartNonStyleArchive>},
    { 5015, registered<TSCH::PreUFF::ChartSeriesNonStyleArchive>},
    { 5016, registered<TSCH::PreUFF::ChartAxisNonStyleArchive>},
    { 5017, registered<TSCH::PreUFF::LegendNonStyleArchive>},
    { 5020, registered<TSCH::ChartStylePreset>},
    { 5021, registered<TSCH::ChartDrawableArchive>},
    { 5022, registered<TSCH::ChartStyleArchive>},
    { 5023, registered<TSCH::ChartNonStyleArchive>},
    { 5024, registered<TSCH::LegendStyleArchive>},
    { 5025, registered<TSCH::LegendNonStyleArchive>},
    { 5026, registered<TSCH::ChartAxisStyleArchive>},
    { 5027, registered<TSCH::ChartAxisNonStyleArchive>},
    { 5028, registered<TSCH::ChartSeriesStyleArchive>},
    { 5029, registered<TSCH::ChartSeriesNonStyleArchive>},
    { 5103, registered<TSCH::CommandSetChartTypeArchive>},
    { 5104, registered<TSCH::CommandSetSeriesNameArchive>},
    { 5105, registered<TSCH::CommandSetCategoryNameArchive>},
    { 5107, registered<TSCH::CommandSetScatterFormatArchive>},
    { 5108, registered<TSCH::CommandSetLegendFrameArchive>},
    { 5109, registered<TSCH::CommandSetGridValueArchive>},
    { 5110, registered<TSCH::CommandSetGridDirectionArchive>},
    { 5115, registered<TSCH::CommandAddGridRowsArchive>},
    { 5116, registered<TSCH::CommandAddGridColumnsArchive>},
    { 5118, registered<TSCH::CommandMoveGridRowsArchive>},
    { 5119, registered<TSCH::CommandMoveGridColumnsArchive>},
    { 5120, registered<TSCH::CommandDeleteGridRowsArchive>},
    { 5121, registered<TSCH::CommandDeleteGridColumnsArchive>},
    { 5122, registered<TSCH::CommandSetPieWedgeExplosion>},
    { 5123, registered<TSCH::CommandStyleSwapArchive>},
    { 5124, registered<TSCH::CommandChartApplyTheme>},
    { 5125, registered<TSCH::CommandChartApplyPreset>},
    { 5126, registered<TSCH::ChartCommandArchive>},
    { 5127, registered<TSCH::CommandReplaceGridValuesArchive>},
    { 5129, registered<TSCH::StylePasteboardDataArchive>},
    { 5130, registered<TSCH::CommandSetMultiDataSetIndexArchive>},
    { 5131, registered<TSCH::CommandReplaceThemePresetArchive>},
    { 5132, registered<TSCH::CommandInvalidateWPCaches>},
    { 6000, registered<TST::TableInfoArchive>},
    { 6001, registered<TST::TableModelArchive>},
    { 6002, registered<TST::Tile>},
    { 6003, registered<TST::TableStyleArchive>},
    { 6004, registered<TST::CellStyleArchive>},
    { 6005, registered<TST::TableDataList>},
    { 6006, registered<TST::HeaderStorageBucket>},
    { 6007, registered<TST::WPTableInfoArchive>},
    { 6008, registered<TST::TableStylePresetArchive>},
    { 6009, registered<TST::TableStrokePresetArchive>},
    { 6010, registered<TST::ConditionalStyleSetArchive>},
    { 6100, registered<TST::TableCommandArchive>},
    { 6101, registered<TST::CommandDeleteCellsArchive>},
    { 6102, registered<TST::CommandInsertColumnsOrRowsArchive>},
    { 6103, registered<TST::CommandRemoveColumnsOrRowsArchive>},
    { 6107, registered<TST::CommandSetTableNameArchive>},
    { 6108, registered<TST::CommandStyleCellsArchive>},
    { 6111, registered<TST::CommandChangeFreezeHeaderStateArchive>},
    { 6114, registered<TST::CommandSetTableNameEnabledArchive>},
    { 6117, registered<TST::CommandApplyTableStylePresetArchive>},
    { 6120, registered<TST::CommandSetRepeatingHeaderEnabledArchive>},
    { 6123, registered<TST::CommandSortArchive>},
    { 6125, registered<TST::CommandStyleTableArchive>},
    { 6126, registered<TST::CommandSetNumberOfDecimalPlacesArchive>},
    { 6127, registered<TST::CommandSetShowThousandsSeparatorArchive>},
    { 6128, registered<TST::CommandSetNegativeNumberStyleArchive>},
    { 6129, registered<TST::CommandSetFractionAccuracyArchive>},
    { 6131, registered<TST::CommandSetCurrencyCodeArchive>},
    { 6132, registered<TST::CommandSetUseAccountingStyleArchive>},
    { 6136, registered<TST::CommandSetTableFontNameArchive>},
    { 6137, registered<TST::CommandSetTableFontSizeArchive>},
    { 6142, registered<TST::CommandSetTableNameHeightArchive>},
    { 6144, registered<TST::MergeRegionMapArchive>},
    { 6145, registered<TST::CommandHideShowArchive>},
    { 6146, registered<TST::CommandSetBaseArchive>},
    { 6147, registered<TST::CommandSetBasePlacesArchive>},
    { 6148, registered<TST::CommandSetBaseUseMinusSignArchive>},
    { 6179, registered<TST::FormulaEqualsTokenAttachmentArchive>},
    { 6181, registered<TST::TokenAttachmentArchive>},
    { 6182, registered<TST::ExpressionNodeArchive>},
    { 6183, registered<TST::BooleanNodeArchive>},
    { 6184, registered<TST::NumberNodeArchive>},
    { 6185, registered<TST::StringNodeArchive>},
    { 6186, registered<TST::ArrayNodeArchive>},
    { 6187, registered<TST::ListNodeArchive>},
    { 6188, registered<TST::OperatorNodeArchive>},
    { 6189, registered<TST::FunctionNodeArchive>},
    { 6190, registered<TST::DateNodeArchive>},
    { 6191, registered<TST::ReferenceNodeArchive>},
    { 6192, registered<TST::DurationNodeArchive>},
    { 6193, registered<TST::ArgumentPlaceholderNodeArchive>},
    { 6194, registered<TST::PostfixOperatorNodeArchive>},
    { 6195, registered<TST::PrefixOperatorNodeArchive>},
    { 6196, registered<TST::FunctionEndNodeArchive>},
    { 6197, registered<TST::EmptyExpressionNodeArchive>},
    { 6198, registered<TST::LayoutHintArchive>},
    { 6199, registered<TST::CompletionTokenAttachmentArchive>},
    { 6200, registered<TST::FormulaEditingCommandGroupArchive>},
    { 6201, registered<TST::TableDataList>},
    { 6204, registered<TST::HiddenStateFormulaOwnerArchive>},
    { 6205, registered<TST::CommandSetAutomaticDurationUnitsArchive>},
    { 6206, registered<TST::PopUpMenuModel>},
    { 6218, registered<TST::RichTextPayloadArchive>},
    { 6220, registered<TST::FilterSetArchive>},
    { 6221, registered<TST::CommandSetFiltersEnabledArchive>},
    { 6224, registered<TST::CommandRewriteFilterFormulasForTableResizeArchive>},
    { 6226, registered<TST::CommandTextPreflightInsertCellArchive>},
    { 6227, registered<TST::FormulaEditingCommandSelectionBehaviorArchive>},
    { 6228, registered<TST::CommandDeleteCellContentsArchive>},
    { 6229, registered<TST::CommandPostflightSetCellArchive>},
    { 6235, registered<TST::IdentifierNodeArchive>},
    { 6238, registered<TST::CommandSetDateTimeFormatArchive>},
    { 6239, registered<TST::TableCommandSelectionBehaviorArchive>},
    { 6244, registered<TST::CommandApplyCellCommentArchive>},
    { 6246, registered<TST::CommandSetFormulaTokenizationArchive>},
    { 6247, registered<TST::TableStyleNetworkArchive>},
    { 6250, registered<TST::CommandSetFilterSetTypeArchive>},
    { 6255, registered<TST::CommandSetTextStyleArchive>},
    {11000, registered<TSP::PasteboardObject>},
    {11006, registered<TSP::PackageMetadata>},
    {11007, registered<TSP::PasteboardMetadata>},
    {11008, registered<TSP::ObjectContainer>},
};

constexpr RegistryRow kKeynoteRows[] = {
    {    1, registered<KN::DocumentArchive>},
    {    2, registered<KN::ShowArchive>},
    {    3, registered<KN::UIStateArchive>},
    {    4, registered<KN::SlideNodeArchive>},
    {    5, registered<KN::SlideArchive>},
    {    6, registered<KN::SlideArchive>},
    {    7, registered<KN::PlaceholderArchive>},
    {    8, registered<KN::BuildArchive>},
    {    9, registered<KN::SlideStyleArchive>},
    {   10, registered<KN::ThemeArchive>},
    {   11, registered<KN::PasteboardNativeStorageArchive>},
    {   12, registered<KN::PlaceholderArchive>},
    {   14, registered<TSWP::TextualAttachmentArchive>},
    {   15, registered<KN::NoteArchive>},
    {   16, registered<KN::RecordingArchive>},
    {   17, registered<KN::RecordingEventTrackArchive>},
    {   18, registered<KN::RecordingMovieTrackArchive>},
    {   19, registered<KN::ClassicStylesheetRecordArchive>},
    {   20, registered<KN::ClassicThemeRecordArchive>},
    {   21, registered<KN::Soundtrack>},
    {   22, registered<KN::SlideNumberAttachmentArchive>},
    {   23, registered<KN::DesktopUILayoutArchive>},
    {   24, registered<KN::CanvasSelectionArchive>},
    {   25, registered<KN::SlideCollectionSelectionArchive>},
    {  100, registered<KN::CommandBuildSetValueArchive>},
    {  101, registered<KN::CommandShowInsertSlideArchive>},
    {  102, registered<KN::CommandShowMoveSlideArchive>},
    {  103, registered<KN::CommandShowRemoveSlideArchive>},
    {  104, registered<KN::CommandSlideInsertDrawablesArchive>},
    {  105, registered<KN::CommandSlideRemoveDrawableArchive>},
    {  106, registered<KN::CommandSlideNodeSetPropertyArchive>},
    {  107, registered<KN::CommandSlideInsertBuildArchive>},
    {  109, registered<KN::CommandSlideRemoveBuildArchive>},
    {  110, registered<KN::CommandSlideInsertBuildChunkArchive>},
    {  112, registered<KN::CommandSlideRemoveBuildChunkArchive>},
    {  114, registered<KN::CommandTransitionSetValueArchive>},
    {  115, registered<KN::UIStateCommandGroupArchive>},
    {  118, registered<KN::CommandSlideMoveDrawableZOrderArchive>},
    {  119, registered<KN::CommandChangeMasterSlideArchive>},
    {  123, registered<KN::CommandShowSetSlideNumberVisibilityArchive>},
    {  124, registered<KN::CommandShowSetValueArchive>},
    {  128, registered<KN::CommandShowMarkOutOfSyncRecordingArchive>},
    {  129, registered<KN::CommandShowRemoveRecordingArchive>},
    {  130, registered<KN::CommandShowReplaceRecordingArchive>},
    {  131, registered<KN::CommandShowSetSoundtrack>},
    {  132, registered<KN::CommandSoundtrackSetValue>},
    {  134, registered<KN::CommandMoveMastersArchive>},
    {  135, registered<KN::CommandInsertMasterArchive>},
    {  136, registered<KN::CommandSlideSetStyleArchive>},
    {  137, registered<KN::CommandSlideSetPlaceholdersForTagsArchive>},
    {  138, registered<KN::CommandBuildChunkSetValueArchive>},
    {  139, registered<KN::CommandSlideMoveBuildChunksArchive>},
    {  140, registered<KN::CommandRemoveMasterArchive>},
    {  141, registered<KN::CommandRenameMasterArchive>},
    {  142, registered<KN::CommandMasterSetThumbnailTextArchive>},
    {  143, registered<KN::CommandShowChangeThemeArchive>},
    {  144, registered<KN::CommandSlidePrimitiveSetMasterArchive>},
    {  145, registered<KN::CommandMasterSetBodyStylesArchive>},
    {  146, registered<KN::CommandSlideReapplyMasterArchive>},
    {  148, registered<KN::ChartInfoGeometryCommandArchive>},
    {10011, registered<TSWP::SectionPlaceholderArchive>},
};

constexpr RegistryRow kNumbersRows[] = {
    {    1, registered<TN::DocumentArchive>},
    {    2, registered<TN::SheetArchive>},
    {    3, registered<TN::FormBasedSheetArchive>},
    {    7, registered<TN::PlaceholderArchive>},
    {10011, registered<TSWP::SectionPlaceholderArchive>},
    {12002, registered<TN::CommandSheetInsertDrawablesArchive>},
    {12003, registered<TN::CommandDocumentInsertSheetArchive>},
    {12004, registered<TN::CommandDocumentRemoveSheetArchive>},
    {12005, registered<TN::CommandSetSheetNameArchive>},
    {12006, registered<TN::ChartMediatorArchive>},
    {12008, registered<TN::CommandDocumentReorderSheetArchive>},
    {12009, registered<TN::ThemeArchive>},
    {12011, registered<TN::CommandReorderSidebarItemChildrenAchive>},
    {12012, registered<TN::CommandSheetRemoveDrawablesArchive>},
    {12013, registered<TN::CommandSheetMoveDrawableZOrderArchive>},
    {12014, registered<TN::CommandChartMediatorSetEditingState>},
    {12015, registered<TN::CommandFormChooseTargetTableArchive>},
    {12016, registered<TN::CommandChartMediatorUpdateForEntityDelete>},
    {12017, registered<TN::CommandSetPageOrientationArchive>},
    {12018, registered<TN::CommandSetContentScaleArchive>},
    {12019, registered<TN::CommandSetShowPageNumbersValueArchive>},
    {12024, registered<TN::UndoRedoStateArchive>},
    {12026, registered<TN::UIStateArchive>},
    {12028, registered<TN::SheetSelectionArchive>},
};

constexpr RegistryRow kPagesRows[] = {
    {    7, registered<TP::PlaceholderArchive>},
    {10000, registered<TP::DocumentArchive>},
    {10001, registered<TP::ThemeArchive>},
    {10010, registered<TP::FloatingDrawablesArchive>},
    {10011, registered<TP::SectionArchive>},
    {10012, registered<TP::SettingsArchive>},
    {10015, registered<TP::DrawablesZOrderArchive>},
    {10101, registered<TP::InsertDrawablesCommandArchive>},
    {10102, registered<TP::RemoveDrawablesCommandArchive>},
    {10110, registered<TP::MoveDrawablesAttachedCommandArchive>},
    {10111, registered<TP::MoveDrawablesFloatingCommandArchive>},
    {10112, registered<TP::MoveInlineDrawableAnchoredCommandArchive>},
    {10113, registered<TP::InsertFootnoteCommandArchive>},
    {10114, registered<TP::ChangeFootnoteFormatCommandArchive>},
    {10115, registered<TP::ChangeFootnoteKindCommandArchive>},
    {10116, registered<TP::ChangeFootnoteNumberingCommandArchive>},
    {10117, registered<TP::ToggleBodyLayoutDirectionCommandArchive>},
    {10118, registered<TP::ChangeFootnoteSpacingCommandArchive>},
    {10119, registered<TP::MoveAnchoredDrawableInlineCommandArchive>},
    {10120, registered<TP::ChangeSectionMarginsCommandArchive>},
    {10125, registered<TP::InsertMasterDrawablesCommandArchive>},
    {10126, registered<TP::RemoveMasterDrawablesCommandArchive>},
    {10127, registered<TP::PasteMasterDrawablesCommandArchive>},
    {10130, registered<TP::MoveDrawablesPageIndexCommandArchive>},
    {10131, registered<TP::LayoutStateArchive>},
    {10132, registered<TP::CanvasSelectionArchive>},
    {10133, registered<TP::ViewStateArchive>},
    {10140, registered<TP::MoveMasterDrawableZOrderCommandArchive>},
    {10143, registered<TP::PageMasterArchive>},
    {10147, registered<TP::UIStateArchive>},
    {10149, registered<TP::TrackChangesCommandArchive>},
    {10152, registered<TP::InsertSectionBreakCommandArchive>},
    {10153, registered<TP::DeleteSectionCommandArchive>},
    {10154, registered<TP::ReplaceSectionCommandArchive>},
    {10155, registered<TP::ChangeSectionPropertyCommandArchive>},
    {10157, registered<TP::PauseChangeTrackingCommandArchive>},
};

// clang-format on

template <std::size_t N>
constexpr bool isAscending(const RegistryRow (&rows)[N]) {
  return std::ranges::adjacent_find(rows, std::ranges::greater_equal{}, &RegistryRow::type) ==
         std::end(rows);
}
static_assert(isAscending(kCommonRows) && std::size(kCommonRows) == 262);
static_assert(isAscending(kKeynoteRows) && std::size(kKeynoteRows) == 61);
static_assert(isAscending(kNumbersRows) && std::size(kNumbersRows) == 24);
static_assert(isAscending(kPagesRows) && std::size(kPagesRows) == 36);

template <std::size_t N>
constexpr bool haveLayouts(const RegistryRow (&rows)[N]) {
  return std::ranges::none_of(
      rows, [](const RegistryRow& row) { return row.messageClass.layoutIndex == kNoLayout; });
}
static_assert(haveLayouts(kCommonRows) && haveLayouts(kKeynoteRows) && haveLayouts(kNumbersRows) &&
              haveLayouts(kPagesRows));

const RegisteredClass* find(std::span<const RegistryRow> rows, int type) {
  const auto row = std::ranges::lower_bound(rows, type, {}, &RegistryRow::type);
  return row != rows.end() && row->type == type ? &row->messageClass : nullptr;
}

Message* build(std::span<const RegistryRow> rows, int type) {
  const RegisteredClass* found = find(rows, type);
  return found != nullptr ? found->create() : nullptr;
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

RegistryView::RegistryView(MessageFactory factory) {
  struct Factory {
    MessageFactory function;
    std::span<const RegistryRow> rows;
    std::span<const RegistryRow> commonRows;
  };
  static constexpr Factory kFactories[] = {
      {getPagesMessage, kPagesRows, kCommonRows},
      {getKeynoteMessage, kKeynoteRows, kCommonRows},
      {getNumbersMessage, kNumbersRows, kCommonRows},
      {getCommonRegistryMessage, kCommonRows, {}},
      {getKeynoteRegistryMessage, kKeynoteRows, {}},
      {getNumbersRegistryMessage, kNumbersRows, {}},
      {getPagesRegistryMessage, kPagesRows, {}},
  };
  const auto* known = std::ranges::find(kFactories, factory, &Factory::function);
  if (known == std::end(kFactories)) return;
  rows_ = known->rows;
  commonRows_ = known->commonRows;
}

const RegisteredClass* RegistryView::find(int type) const {
  const RegisteredClass* own = iwork13::find(rows_, type);
  return own != nullptr ? own : iwork13::find(commonRows_, type);
}

}  // namespace vn::iwork13
