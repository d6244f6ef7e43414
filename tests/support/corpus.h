// The folder of real documents, which is not part of the project.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/bare_host.h"

namespace dorvex::testing {

// The folder: the environment variable DORVEX_CORPUS, or else the build's setting.
std::filesystem::path corpusFolder();

// Whether the folder is there.
bool hasCorpus();

// What a test says that skips itself for want of it.
std::string corpusIsAbsent();

// The files of what each document must give: the corpus' own, and one for more
// documents where a folder for them stands beside the corpus.
std::vector<std::filesystem::path> corpusExpectations();

// The file names of all documents, in order; none where the folder is absent.
std::vector<std::string> corpusDocuments();

// Where the document of that name is.
std::filesystem::path corpusPath(const std::string& name);

// Gives the host one document, a directory package by a path of one of its members.
Stream& addCorpusDocument(BareHost& host, const std::string& name);

// A document's name as the name of a test.
std::string testNameOf(const std::string& document);

}  // namespace dorvex::testing
