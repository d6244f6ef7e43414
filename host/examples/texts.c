/* Prints the texts of a document:
 *
 *   texts DOCUMENT
 */
#include <dorvex/dorvex.h>
#include <stdio.h>

static int print_texts(dorvex_host* host, const char* path) {
  dorvex_document* document = NULL;
  dorvex_result result = {.struct_size = sizeof result};
  const char* text = NULL;
  size_t length = 0;
  if (dorvex_open_path(host, path, &document) != DORVEX_OK) return 1;
  while (dorvex_next_text(document, &text, &length) == DORVEX_OK) puts(text);
  dorvex_document_result(document, &result);
  if (result.status != DORVEX_STATUS_OK) fprintf(stderr, "%s: %s\n", path, result.message);
  dorvex_document_free(document);
  return result.status == DORVEX_STATUS_OK ? 0 : 1;
}

int main(int count, char** arguments) {
  dorvex_host* host = NULL;
  int status = 0;
  if (count != 2 || dorvex_host_new(NULL, &host) != DORVEX_OK) {
    fprintf(stderr, "usage: texts DOCUMENT %s\n", dorvex_last_error());
    return 2;
  }
  status = print_texts(host, arguments[1]);
  dorvex_host_free(host);
  return status;
}
