// What leaves the built modules, read from their own symbol tables.
#include <cxxabi.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "module/reader_module.h"
#include "support/package_writer.h"

namespace dorvex::testing::exports_test {
namespace {

struct Symbol {
  std::string name;  // demangled
  unsigned char binding;
};

std::string demangle(const char* name) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(
      abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
  return status == 0 ? text.get() : name;
}

// An ELF file in memory.
class ElfFile {
 public:
  explicit ElfFile(const std::string& path) : bytes_(readFile(path)) {}

  // The defined symbols that other modules see.
  std::vector<Symbol> exports() const {
    std::vector<Symbol> symbols;
    const Elf64_Shdr* table = section(SHT_DYNSYM);
    const char* names = bytes_.data() + sections()[table->sh_link].sh_offset;
    for (const Elf64_Sym& symbol : items<Elf64_Sym>(*table)) {
      const unsigned char binding = ELF64_ST_BIND(symbol.st_info);
      if (symbol.st_shndx == SHN_UNDEF || binding == STB_LOCAL) continue;
      symbols.push_back({demangle(names + symbol.st_name), binding});
    }
    return symbols;
  }

  // The value of an entry of the dynamic section, 0 where there is none.
  std::uint64_t dynamic(std::int64_t tag) const {
    for (const Elf64_Dyn& entry : items<Elf64_Dyn>(*section(SHT_DYNAMIC))) {
      if (entry.d_tag == tag) return entry.d_un.d_val;
    }
    return 0;
  }

  std::uint64_t addressOf(const std::string& name) const {
    const Elf64_Shdr* table = section(SHT_DYNSYM);
    const char* names = bytes_.data() + sections()[table->sh_link].sh_offset;
    for (const Elf64_Sym& symbol : items<Elf64_Sym>(*table)) {
      if (names + symbol.st_name == name) return symbol.st_value;
    }
    return 0;
  }

 private:
  template <typename Item>
  std::span<const Item> items(const Elf64_Shdr& header) const {
    return {reinterpret_cast<const Item*>(bytes_.data() + header.sh_offset),
            header.sh_size / sizeof(Item)};
  }

  std::span<const Elf64_Shdr> sections() const {
    const auto* header = reinterpret_cast<const Elf64_Ehdr*>(bytes_.data());
    return {reinterpret_cast<const Elf64_Shdr*>(bytes_.data() + header->e_shoff), header->e_shnum};
  }

  const Elf64_Shdr* section(std::uint32_t type) const {
    const auto all = sections();
    return &*std::ranges::find(all, type, &Elf64_Shdr::sh_type);
  }

  std::string bytes_;
};

std::set<std::string> namesOf(const std::vector<Symbol>& symbols) {
  std::set<std::string> names;
  for (const Symbol& symbol : symbols) names.insert(symbol.name);
  return names;
}

std::set<std::string> intendedNames() {
  std::ifstream file(DORVEX_MODULE_TEST_DATA "/exports.txt");
  EXPECT_TRUE(file.is_open());
  std::set<std::string> names;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (!line.starts_with("class ")) {
      names.insert(line);
      continue;
    }
    for (const char* what : {"typeinfo for ", "typeinfo name for ", "vtable for "})
      names.insert(what + line.substr(6));
  }
  return names;
}

std::vector<std::string> difference(const std::set<std::string>& from,
                                    const std::set<std::string>& what) {
  std::vector<std::string> names;
  std::ranges::set_difference(from, what, std::back_inserter(names));
  return names;
}

TEST(Exports, AreTheIntendedNames) {
  const auto exported = namesOf(ElfFile(ReaderModule::path()).exports());
  const auto intended = intendedNames();
  EXPECT_EQ(difference(exported, intended), std::vector<std::string>())
      << "exported, but not in exports.txt";
  EXPECT_EQ(difference(intended, exported), std::vector<std::string>())
      << "in exports.txt, but not exported";
}

TEST(Exports, HoldTheSevenNamesOfTheHostAndNoOtherEntryPoint) {
  const auto exported = namesOf(ElfFile(ReaderModule::path()).exports());
  for (const char* name : {"dorvexGetReaderInterface", "dorvexAllocateContext", "vnDllInit",
                           "vnDllShutdown", "init", "fini", "vn_iwork13_ShutDownProtobuf"})
    EXPECT_TRUE(exported.contains(name)) << name;
  EXPECT_EQ(std::ranges::count_if(
                exported, [](const std::string& name) { return name.starts_with("dorvex"); }),
            2);
}

TEST(Exports, HoldOneEntryPointOfTheModuleThatRendersContent) {
  EXPECT_EQ(namesOf(ElfFile(DORVEX_CONTENT_MODULE).exports()),
            std::set<std::string>{"dorvexRenderContent"});
}

TEST(Exports, HoldNoUniqueSymbol) {
  for (const std::string& path : {std::string(ReaderModule::path()), containerModulePath(),
                                  std::string(DORVEX_CONTENT_MODULE)}) {
    for (const Symbol& symbol : ElfFile(path).exports())
      EXPECT_NE(symbol.binding, STB_GNU_UNIQUE) << symbol.name;
  }
}

TEST(Exports, HoldNothingOfTheLibrariesInside) {
  for (const std::string& name : namesOf(ElfFile(ReaderModule::path()).exports())) {
    for (const char* library : {"google::", "snappy::", "std::"})
      EXPECT_FALSE(name.starts_with(library)) << name;
  }
}

TEST(Exports, MakeFiniTheTerminatorAndInitNoInitialiser) {
  const ElfFile module(ReaderModule::path());
  EXPECT_NE(module.addressOf("fini"), 0U);
  EXPECT_EQ(module.dynamic(DT_FINI), module.addressOf("fini"));
  EXPECT_NE(module.dynamic(DT_INIT), module.addressOf("init"));
}

TEST(Exports, OfTheContainerModuleAreItsThreeEntryPoints) {
  EXPECT_EQ(namesOf(ElfFile(containerModulePath()).exports()),
            (std::set<std::string>{"unzipGetContainerReaderInterface", "unzipLoadLibzip",
                                   "unzipOpenLimitedContainer"}));
}

}  // namespace
}  // namespace dorvex::testing::exports_test
