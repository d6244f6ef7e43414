/* The C interface, used as a C99 program uses it.
 *
 *   dorvex_c_tests NAME MODULE FAKE-MODULE SAMPLES
 *
 * runs the test of that name; without arguments, lists the names. */
#define _POSIX_C_SOURCE 200809L /* mkdtemp */
#include <dorvex/dorvex.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static const char* module;      /* the reader module */
static const char* fake_module; /* a scripted one, see fake_reader.cpp */
static const char* samples;     /* a folder of documents */
static int failures;

#define CHECK(condition)                                                               \
  do {                                                                                 \
    if (!(condition)) {                                                                \
      fprintf(stderr, "%s:%d: %s\n  last error: %s\n", __FILE__, __LINE__, #condition, \
              dorvex_last_error());                                                    \
      ++failures;                                                                      \
    }                                                                                  \
  } while (0)

/* --- Help ------------------------------------------------------------------ */

static dorvex_options options_for(const char* file) {
  dorvex_options options;
  CHECK(dorvex_options_init(&options, sizeof options) == DORVEX_OK);
  options.module = file;
  return options;
}

static dorvex_host* host_for(const char* file) {
  const dorvex_options options = options_for(file);
  dorvex_host* host = NULL;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_OK);
  return host;
}

static const char* sample(void) {
  static char path[4096];
  snprintf(path, sizeof path, "%s/keynote-sample.key", samples);
  return path;
}

static dorvex_document* open_path(dorvex_host* host, const char* path) {
  dorvex_document* document = NULL;
  CHECK(dorvex_open_path(host, path, &document) == DORVEX_OK);
  return document;
}

/* A document that the fake module reads: its bytes are its script. */
static dorvex_document* open_script(dorvex_host* host, const char* script) {
  dorvex_document* document = NULL;
  CHECK(dorvex_open_memory(host, script, strlen(script), &document) == DORVEX_OK);
  return document;
}

static dorvex_result result_of(dorvex_document* document) {
  dorvex_result result;
  result.struct_size = sizeof result;
  CHECK(dorvex_document_result(document, &result) == DORVEX_OK);
  return result;
}

static char* read_whole(const char* path, size_t* length) {
  FILE* file = fopen(path, "rb");
  char* bytes = malloc(1 << 20);
  CHECK(file != NULL && bytes != NULL);
  *length = fread(bytes, 1, 1 << 20, file);
  fclose(file);
  return bytes;
}

/* --- Tests ----------------------------------------------------------------- */

static void gives_the_texts_of_a_document(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  const char* text = NULL;
  size_t length = 0;
  int texts = 0;
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_OK);
  CHECK(strcmp(text, "A Pot of Tea") == 0);
  CHECK(length == strlen(text));
  for (texts = 1; dorvex_next_text(document, &text, &length) == DORVEX_OK; ++texts) {
    CHECK(strlen(text) == length);
  }
  CHECK(texts == 17);
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_END);
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void gives_whole_tokens(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  const unsigned char* tokens = NULL;
  size_t length = 0;
  uint64_t total = 0;
  CHECK(dorvex_next_tokens(document, &tokens, &length) == DORVEX_OK);
  CHECK(length > 5 && tokens[0] == 0x0F); /* the document's header */
  do {
    total += length;
  } while (dorvex_next_tokens(document, &tokens, &length) == DORVEX_OK);
  CHECK(result_of(document).token_bytes == total);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void tells_what_became_of_a_document(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  const dorvex_result result = result_of(document);
  CHECK(result.struct_size == sizeof result);
  CHECK(result.status == DORVEX_STATUS_OK);
  CHECK(result.failure == DORVEX_FAILURE_NONE);
  CHECK(result.limit == DORVEX_LIMIT_NONE);
  CHECK(result.module_result == 0);
  CHECK(result.signal == 0);
  CHECK(result.kind == DORVEX_KIND_KEYNOTE);
  CHECK(strcmp(result.message, "") == 0);
  CHECK(result.token_bytes > 0);
  CHECK(result.skipped == 0);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void opens_bytes_in_memory(void) {
  size_t length = 0;
  char* bytes = read_whole(sample(), &length);
  dorvex_host* host = host_for(module);
  dorvex_document* document = NULL;
  CHECK(dorvex_open_memory(host, bytes, length, &document) == DORVEX_OK);
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  CHECK(dorvex_open_memory(host, NULL, 0, &document) == DORVEX_OK);
  CHECK(result_of(document).failure == DORVEX_FAILURE_NOT_A_PACKAGE);
  dorvex_document_free(document);
  dorvex_host_free(host);
  free(bytes);
}

static ptrdiff_t read_file(void* user, void* buffer, size_t count) {
  return (ptrdiff_t)fread(buffer, 1, count < 100 ? count : 100, user);
}

static void opens_what_a_callback_gives(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = NULL;
  FILE* file = fopen(sample(), "rb");
  CHECK(dorvex_open_callback(host, read_file, file, &document) == DORVEX_OK);
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  fclose(file);
  dorvex_host_free(host);
}

static ptrdiff_t fail_to_read(void* user, void* buffer, size_t count) {
  (void)user, (void)buffer, (void)count;
  return -1;
}

static ptrdiff_t read_too_much(void* user, void* buffer, size_t count) {
  (void)user, (void)buffer;
  return (ptrdiff_t)count + 1;
}

static void reports_the_failure_of_a_callback(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = NULL;
  CHECK(dorvex_open_callback(host, fail_to_read, NULL, &document) == DORVEX_READ_FAILED);
  CHECK(dorvex_open_callback(host, read_too_much, NULL, &document) == DORVEX_READ_FAILED);
  CHECK(document == NULL);
  dorvex_host_free(host);
}

static void gives_a_failed_document_its_result(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, "/no/such/document");
  const char* text = NULL;
  size_t length = 0;
  dorvex_result result;
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_END);
  result = result_of(document);
  CHECK(result.status == DORVEX_STATUS_FAILED);
  CHECK(result.failure == DORVEX_FAILURE_NO_SUCH_FILE);
  CHECK(result.module_result == -1);
  CHECK(strcmp(result.message, "No such file or directory") == 0);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void gives_a_module_that_cannot_be_loaded_as_a_result(void) {
  dorvex_host* host = host_for("/no/such/module.so");
  dorvex_document* document = open_path(host, sample());
  CHECK(result_of(document).failure == DORVEX_FAILURE_MODULE_MISSING);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void ends_a_document_at_the_time_limit(void) {
  dorvex_options options = options_for(fake_module);
  dorvex_host* host = NULL;
  dorvex_document* document = NULL;
  dorvex_result result;
  options.wall_time_ms = 100;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_OK);
  document = open_script(host, "hang\n");
  result = result_of(document);
  CHECK(result.failure == DORVEX_FAILURE_TIMED_OUT);
  CHECK(result.limit == DORVEX_LIMIT_WALL_TIME);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void survives_a_crash_of_the_module(void) {
  dorvex_host* host = host_for(fake_module);
  dorvex_document* document = open_script(host, "crash\n");
  const dorvex_result result = result_of(document);
  CHECK(result.failure == DORVEX_FAILURE_CRASHED);
  CHECK(result.signal != 0);
  dorvex_document_free(document);
  document = open_script(host, "text one\n");
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void gives_texts_that_hold_any_byte(void) {
  dorvex_host* host = host_for(fake_module);
  dorvex_document* document = open_script(host, "text one\ntext \xff two\n");
  const char* text = NULL;
  size_t length = 0;
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_OK);
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_OK);
  CHECK(length == 5 && memcmp(text, "\xff two", 6) == 0);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void keeps_a_document_when_its_host_is_freed(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  dorvex_host_free(host);
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
}

static void gives_a_document_up_that_is_freed_early(void) {
  dorvex_host* host = host_for(module);
  const char* text = NULL;
  size_t length = 0;
  int round = 0;
  for (round = 0; round < 3; ++round) {
    dorvex_document* document = open_path(host, sample());
    CHECK(dorvex_next_text(document, &text, &length) == DORVEX_OK);
    dorvex_document_free(document);
  }
  dorvex_host_free(host);
}

static void reads_in_this_process_on_request(void) {
  dorvex_options options = options_for(module);
  dorvex_host* host = NULL;
  dorvex_document* document = NULL;
  options.isolation = DORVEX_ISOLATION_IN_PROCESS;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_OK);
  document = open_path(host, sample());
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

/* A package directory with one member stream that is none. */
static const char* damaged_package(void) {
  static char folder[] = "/tmp/dorvex-c-test-XXXXXX";
  char path[sizeof folder + 64];
  FILE* file = NULL;
  CHECK(mkdtemp(folder) != NULL);
  snprintf(path, sizeof path, "%s/Index", folder);
  CHECK(mkdir(path, 0700) == 0);
  snprintf(path, sizeof path, "%s/Index/Document.iwa", folder);
  file = fopen(path, "wb");
  CHECK(file != NULL && fputs("junk", file) >= 0);
  fclose(file);
  return folder;
}

static void remove_package(const char* folder) {
  char path[256];
  snprintf(path, sizeof path, "%s/Index/Document.iwa", folder);
  CHECK(remove(path) == 0);
  snprintf(path, sizeof path, "%s/Index", folder);
  CHECK(remove(path) == 0);
  CHECK(remove(folder) == 0);
}

static void names_skipped_members(void) {
  const char* folder = damaged_package();
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, folder);
  const char* name = NULL;
  const char* reason = NULL;
  CHECK(dorvex_skipped_member(document, 0, &name, &reason) == DORVEX_INVALID_ARGUMENT);
  CHECK(result_of(document).failure == DORVEX_FAILURE_DAMAGED);
  CHECK(result_of(document).skipped == 1);
  CHECK(dorvex_skipped_member(document, 0, &name, &reason) == DORVEX_OK);
  CHECK(name != NULL && strcmp(name, "Index/Document.iwa") == 0);
  CHECK(reason != NULL && strcmp(reason, "chunk 1 has no valid header") == 0);
  CHECK(dorvex_skipped_member(document, 1, &name, &reason) == DORVEX_INVALID_ARGUMENT);
  dorvex_document_free(document);
  dorvex_host_free(host);
  remove_package(folder);
}

static void refuses_null(void) {
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  dorvex_document* other = NULL;
  const char* text = NULL;
  const unsigned char* tokens = NULL;
  size_t length = 0;
  CHECK(dorvex_options_init(NULL, sizeof(dorvex_options)) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_host_new(NULL, NULL) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_open_path(NULL, "a", &other) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_open_path(host, NULL, &other) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_open_path(host, "a", NULL) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_open_memory(host, NULL, 1, &other) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_open_callback(host, NULL, NULL, &other) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_next_text(NULL, &text, &length) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_next_text(document, NULL, &length) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_next_tokens(document, &tokens, NULL) == DORVEX_INVALID_ARGUMENT);
  CHECK(dorvex_document_result(document, NULL) == DORVEX_INVALID_ARGUMENT);
  CHECK(strcmp(dorvex_last_error(), "a pointer that must be set is null") == 0);
  CHECK(other == NULL);
  dorvex_document_free(NULL);
  dorvex_host_free(NULL);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void refuses_values_out_of_range(void) {
  dorvex_options options = options_for(module);
  dorvex_host* host = NULL;
  options.buffer_size = 50;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_INVALID_ARGUMENT);
  options = options_for(module);
  options.isolation = 2;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_INVALID_ARGUMENT);
  options = options_for(module);
  options.sandbox = 3;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_INVALID_ARGUMENT);
  options = options_for(module);
  options.documents_per_worker = 0;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_INVALID_ARGUMENT);
  CHECK(host == NULL);
}

static void ignore(int number) { (void)number; }

/* With SA_RESTART, as signal() sets it: system calls that can go on do. */
static void alarm_soon(void) {
  struct sigaction action;
  memset(&action, 0, sizeof action);
  action.sa_handler = ignore;
  action.sa_flags = SA_RESTART;
  sigaction(SIGALRM, &action, NULL);
  alarm(1);
}

static void keeps_its_time_limit_when_a_signal_comes_in(void) {
  dorvex_options options = options_for(fake_module);
  dorvex_host* host = NULL;
  dorvex_document* document = NULL;
  dorvex_result result;
  result.struct_size = sizeof result;
  options.wall_time_ms = 2000;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_OK);
  document = open_script(host, "hang\n");
  alarm_soon();
  CHECK(dorvex_document_result(document, &result) == DORVEX_OK);
  CHECK(result.failure == DORVEX_FAILURE_TIMED_OUT);
  CHECK(result.limit == DORVEX_LIMIT_WALL_TIME);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void returns_from_a_wait_on_request_and_goes_on(void) {
  dorvex_options options = options_for(fake_module);
  dorvex_host* host = NULL;
  dorvex_document* document = NULL;
  const char* text = NULL;
  size_t length = 0;
  int code = DORVEX_AGAIN;
  int waits = -1;
  options.wait_ms = 50;
  CHECK(dorvex_host_new(&options, &host) == DORVEX_OK);
  document = open_script(host, "nap\ntext late\n");
  for (; code == DORVEX_AGAIN; ++waits) code = dorvex_next_text(document, &text, &length);
  CHECK(code == DORVEX_OK);
  CHECK(text != NULL && strcmp(text, "late") == 0);
  CHECK(waits >= 2);
  CHECK(dorvex_next_text(document, &text, &length) == DORVEX_END);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

/* The record of a later version: this one, and what comes behind it. */
struct later_options {
  dorvex_options known;
  uint64_t unknown;
};

static void works_with_records_of_a_later_version_unless_they_are_used(void) {
  struct later_options options;
  dorvex_host* host = NULL;
  CHECK(dorvex_options_init(&options.known, sizeof options) == DORVEX_OK);
  CHECK(options.known.struct_size == sizeof options);
  CHECK(options.unknown == 0);
  options.known.module = module;
  CHECK(dorvex_host_new(&options.known, &host) == DORVEX_OK);
  dorvex_host_free(host);
  host = NULL;
  options.unknown = 1;
  CHECK(dorvex_host_new(&options.known, &host) == DORVEX_INVALID_ARGUMENT);
  CHECK(host == NULL);
}

static void refuses_records_that_are_too_small(void) {
  dorvex_options options = options_for(module);
  dorvex_host* host = host_for(module);
  dorvex_document* document = open_path(host, sample());
  dorvex_result result;
  dorvex_host* other = NULL;
  CHECK(dorvex_options_init(&options, offsetof(dorvex_options, input) - 1) ==
        DORVEX_INVALID_ARGUMENT);
  options.struct_size = 0;
  CHECK(dorvex_host_new(&options, &other) == DORVEX_INVALID_ARGUMENT);
  result.struct_size = 8;
  CHECK(dorvex_document_result(document, &result) == DORVEX_INVALID_ARGUMENT);
  CHECK(result.struct_size == 8);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

static void tells_versions_and_names(void) {
  CHECK(strcmp(dorvex_version(), DORVEX_VERSION) == 0);
  CHECK(dorvex_abi_version() == DORVEX_ABI_VERSION);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_NONE), "none") == 0);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_DAMAGED), "damaged") == 0);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_OTHER), "other") == 0);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_CHANGED), "changed") == 0);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_OUT_OF_RESOURCES), "out-of-resources") == 0);
  CHECK(strcmp(dorvex_failure_name(DORVEX_FAILURE_OUT_OF_RESOURCES + 1), "other") == 0);
  CHECK(strcmp(dorvex_failure_name(-1), "other") == 0);
  CHECK(strcmp(dorvex_limit_name(DORVEX_LIMIT_WALL_TIME), "wall-time") == 0);
  CHECK(strcmp(dorvex_limit_name(DORVEX_LIMIT_EXPANSION), "expansion") == 0);
  CHECK(strcmp(dorvex_limit_name(DORVEX_LIMIT_INPUT), "input") == 0);
  CHECK(strcmp(dorvex_limit_name(99), "none") == 0);
}

/* Without a module of its own, a host takes the one beside the library. */
static void finds_the_module_beside_the_library(void) {
  dorvex_host* host = NULL;
  dorvex_document* document = NULL;
  CHECK(dorvex_host_new(NULL, &host) == DORVEX_OK);
  document = open_path(host, sample());
  CHECK(result_of(document).status == DORVEX_STATUS_OK);
  dorvex_document_free(document);
  dorvex_host_free(host);
}

/* --- Main ------------------------------------------------------------------ */

struct test {
  const char* name;
  void (*run)(void);
};

static const struct test tests[] = {
    {"GivesTheTextsOfADocument", gives_the_texts_of_a_document},
    {"GivesWholeTokens", gives_whole_tokens},
    {"TellsWhatBecameOfADocument", tells_what_became_of_a_document},
    {"OpensBytesInMemory", opens_bytes_in_memory},
    {"OpensWhatACallbackGives", opens_what_a_callback_gives},
    {"ReportsTheFailureOfACallback", reports_the_failure_of_a_callback},
    {"GivesAFailedDocumentItsResult", gives_a_failed_document_its_result},
    {"GivesAModuleThatCannotBeLoadedAsAResult", gives_a_module_that_cannot_be_loaded_as_a_result},
    {"EndsADocumentAtTheTimeLimit", ends_a_document_at_the_time_limit},
    {"SurvivesACrashOfTheModule", survives_a_crash_of_the_module},
    {"GivesTextsThatHoldAnyByte", gives_texts_that_hold_any_byte},
    {"KeepsADocumentWhenItsHostIsFreed", keeps_a_document_when_its_host_is_freed},
    {"GivesADocumentUpThatIsFreedEarly", gives_a_document_up_that_is_freed_early},
    {"ReadsInThisProcessOnRequest", reads_in_this_process_on_request},
    {"NamesSkippedMembers", names_skipped_members},
    {"RefusesNull", refuses_null},
    {"RefusesValuesOutOfRange", refuses_values_out_of_range},
    {"WorksWithRecordsOfALaterVersionUnlessTheyAreUsed",
     works_with_records_of_a_later_version_unless_they_are_used},
    {"RefusesRecordsThatAreTooSmall", refuses_records_that_are_too_small},
    {"KeepsItsTimeLimitWhenASignalComesIn", keeps_its_time_limit_when_a_signal_comes_in},
    {"ReturnsFromAWaitOnRequestAndGoesOn", returns_from_a_wait_on_request_and_goes_on},
    {"TellsVersionsAndNames", tells_versions_and_names},
    {"FindsTheModuleBesideTheLibrary", finds_the_module_beside_the_library},
};

int main(int count, char** arguments) {
  const size_t test_count = sizeof tests / sizeof tests[0];
  size_t index = 0;
  if (count == 1) {
    for (index = 0; index < test_count; ++index) puts(tests[index].name);
    return EXIT_SUCCESS;
  }
  if (count != 5) return 2;
  module = arguments[2];
  fake_module = arguments[3];
  samples = arguments[4];
  for (index = 0; index < test_count; ++index) {
    if (strcmp(tests[index].name, arguments[1]) != 0) continue;
    tests[index].run();
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  fprintf(stderr, "no such test: %s\n", arguments[1]);
  return 2;
}
