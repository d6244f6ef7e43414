// Which type ids of an object stream stand for which message. Ids below 300 and from
// 10000 on mean something else in each application.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "declarations.h"

namespace dorvex::content {

namespace TSWP = schema::TSWP;
namespace TSP = schema::TSP;
namespace TSD = schema::TSD;
namespace TSS = schema::TSS;
namespace TSK = schema::TSK;
namespace TSA = schema::TSA;
namespace TST = schema::TST;
namespace TSCE = schema::TSCE;
namespace TSCH = schema::TSCH;
namespace KN = schema::KN;
namespace TP = schema::TP;
namespace TN = schema::TN;
namespace newer = schema::newer;

// The ids of a message: Types<TSWP::StorageArchive>::ids.
template <typename M>
struct Types;

template <std::uint32_t... Ids>
struct TypeIds {
  static constexpr std::array<std::uint32_t, sizeof...(Ids)> ids{Ids...};
  static constexpr bool hold(std::uint32_t type) { return ((type == Ids) || ...); }
};

// clang-format off
template <> struct Types<TSP::PackageMetadata> : TypeIds<11006> {};
template <> struct Types<TSK::AnnotationAuthorArchive> : TypeIds<212> {};
template <> struct Types<TSK::AnnotationAuthorStorageArchive> : TypeIds<213> {};
template <> struct Types<TSD::CommentStorageArchive> : TypeIds<3056> {};
template <> struct Types<TSWP::StorageArchive> : TypeIds<2001, 2005> {};
template <> struct Types<TSWP::DrawableAttachmentArchive> : TypeIds<2003> {};
template <> struct Types<TSWP::TextualAttachmentArchive> : TypeIds<2004, 2007, 2009> {};
template <> struct Types<TSWP::FootnoteReferenceAttachmentArchive> : TypeIds<2008> {};
template <> struct Types<TSWP::TSWPTOCPageNumberAttachmentArchive> : TypeIds<2010> {};
template <> struct Types<TSWP::HighlightArchive> : TypeIds<2013> {};
template <> struct Types<TSWP::CharacterStyleArchive> : TypeIds<2021> {};
template <> struct Types<TSWP::ParagraphStyleArchive> : TypeIds<2022> {};
template <> struct Types<TSWP::ListStyleArchive> : TypeIds<2023> {};
template <> struct Types<TSWP::TOCEntryStyleArchive> : TypeIds<2026> {};
template <> struct Types<TSWP::HyperlinkFieldArchive> : TypeIds<2032> {};
template <> struct Types<TSWP::BookmarkFieldArchive> : TypeIds<2035> {};
template <> struct Types<TSWP::UnsupportedHyperlinkFieldArchive> : TypeIds<2039> {};
template <> struct Types<TSWP::RubyFieldArchive> : TypeIds<2042> {};
template <> struct Types<TSWP::NumberAttachmentArchive> : TypeIds<2043> {};
template <> struct Types<TSWP::TOCEntryInstanceArchive> : TypeIds<2052> {};
template <> struct Types<TSWP::ChangeArchive> : TypeIds<2060> {};
template <> struct Types<TSWP::ChangeSessionArchive> : TypeIds<2062> {};
template <> struct Types<TSWP::TOCInfoArchive> : TypeIds<2240> {};
template <> struct Types<TSWP::TOCAttachmentArchive> : TypeIds<2241> {};
template <> struct Types<TSWP::FlowInfoArchive> : TypeIds<2410> {};
template <> struct Types<TSWP::FlowInfoContainerArchive> : TypeIds<2411> {};
template <> struct Types<TP::DocumentArchive> : TypeIds<10000> {};
template <> struct Types<TP::FloatingDrawablesArchive> : TypeIds<10010> {};
template <> struct Types<TP::SectionArchive> : TypeIds<10011> {};
template <> struct Types<TP::SettingsArchive> : TypeIds<10012> {};
template <> struct Types<TP::DrawablesZOrderArchive> : TypeIds<10015> {};
template <> struct Types<TP::PageMasterArchive> : TypeIds<10143> {};
template <> struct Types<TST::TableInfoArchive> : TypeIds<6000> {};
template <> struct Types<TST::TableModelArchive> : TypeIds<6001> {};
// Drawables, of which readDrawable knows more.
template <> struct Types<newer::TSA_CaptionInfoArchive> : TypeIds<633> {};
template <> struct Types<TSA::GalleryItem> : TypeIds<623> {};
template <> struct Types<TSCH::ChartNonStyleArchive> : TypeIds<5023> {};
template <> struct Types<TSCH::ChartAxisNonStyleArchive> : TypeIds<5027> {};
template <> struct Types<KN::ShowArchive> : TypeIds<2> {};
template <> struct Types<KN::SlideNodeArchive> : TypeIds<4> {};
template <> struct Types<KN::SlideArchive> : TypeIds<5, 6> {};
template <> struct Types<KN::PlaceholderArchive> : TypeIds<7, 12> {};
template <> struct Types<KN::NoteArchive> : TypeIds<15> {};
template <> struct Types<KN::SlideNumberAttachmentArchive> : TypeIds<22> {};
template <> struct Types<TN::SheetArchive> : TypeIds<2> {};
template <> struct Types<TN::FormBasedSheetArchive> : TypeIds<3> {};
template <> struct Types<TST::Tile> : TypeIds<6002> {};
template <> struct Types<TST::TableDataList> : TypeIds<6005, 6201> {};
template <> struct Types<TST::HeaderStorageBucket> : TypeIds<6006> {};
template <> struct Types<newer::TST_TableDataListSegment> : TypeIds<6011> {};
template <> struct Types<TST::MergeRegionMapArchive> : TypeIds<6144> {};
template <> struct Types<TST::PopUpMenuModel> : TypeIds<6206> {};
template <> struct Types<TST::RichTextPayloadArchive> : TypeIds<6218> {};
template <> struct Types<TST::ColumnRowUIDMapArchive> : TypeIds<6267> {};
template <> struct Types<TST::SummaryModelArchive> : TypeIds<6316> {};
template <> struct Types<newer::TST_CategoryOwnerRefArchive> : TypeIds<6372> {};
template <> struct Types<TST::CategoryOwnerArchive_GroupByArchive> : TypeIds<6373> {};
template <> struct Types<TST::CategoryOwnerArchive_GroupByArchive_GroupNodeArchive> : TypeIds<6383> {};
template <> struct Types<TSCE::FormulaOwnerDependenciesArchive> : TypeIds<4008> {};
template <> struct Types<TSK::CustomFormatListArchive> : TypeIds<222> {};
// clang-format on

}  // namespace dorvex::content
