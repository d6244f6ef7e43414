/// @file
/// The numbering of failures that host and readers share. Everything else about
/// the family is derived from this one list.
#pragma once

/// Calls PLAIN(number, class) for every class that is nothing but its number,
/// and DETAILED(number, class) for the two that can say more. 0 is success and
/// 35 stands for nothing. The uneven names are part of the contract.
#define VN_ERROR_CODES(PLAIN, DETAILED)           \
  DETAILED(1, dll_not_found_error)                \
  PLAIN(2, out_of_core_error)                     \
  PLAIN(3, process_cancelled_error)               \
  PLAIN(4, bad_input_stream_error)                \
  PLAIN(5, bad_output_type_error)                 \
  PLAIN(6, general_error)                         \
  PLAIN(7, format_not_supported_error)            \
  PLAIN(8, password_protected_error)              \
  PLAIN(9, adobe_document_server_not_found_error) \
  PLAIN(10, autodet_fail_error)                   \
  PLAIN(11, autodet_no_format_error)              \
  DETAILED(12, reader_init_error)                 \
  PLAIN(13, no_reader_error)                      \
  PLAIN(14, create_output_file_failed_error)      \
  PLAIN(15, create_tempfile_error)                \
  PLAIN(16, writing_output_file_error)            \
  PLAIN(17, create_process_failed_error)          \
  PLAIN(18, wait_for_child_error)                 \
  PLAIN(19, child_timeout_error)                  \
  PLAIN(20, archive_file_not_found_error)         \
  PLAIN(21, archive_fatal_error)                  \
  PLAIN(22, open_stream_failure_error)            \
  PLAIN(23, interface_function_not_found_error)   \
  PLAIN(24, input_file_not_found_error)           \
  PLAIN(25, open_output_file_failed)              \
  PLAIN(26, memory_leak_error)                    \
  PLAIN(27, memory_overwrite_error)               \
  PLAIN(28, general_protection_fault_error)       \
  PLAIN(29, oop_core_error)                       \
  PLAIN(30, vnoop_log_failed_error)               \
  PLAIN(31, over_nested_file_limit_error)         \
  PLAIN(32, pst_access_failed_error)              \
  PLAIN(33, password_required_error)              \
  PLAIN(34, invalid_arguments)                    \
  PLAIN(36, oop_bad_config_error)                 \
  PLAIN(37, oop_broken_pipe_error)                \
  PLAIN(38, oop_pipe_OEF_error)                   \
  PLAIN(39, IPC_timeout_error)                    \
  PLAIN(40, invalid_oop_driver_signature_error)   \
  PLAIN(41, invalid_oop_service_signature_error)  \
  PLAIN(42, zero_file_error)                      \
  PLAIN(43, compression_not_supported_error)      \
  PLAIN(44, no_templates_error)                   \
  PLAIN(45, no_main_template_error)               \
  PLAIN(46, invalid_template_error)               \
  PLAIN(47, template_error)                       \
  PLAIN(48, is_directory_error)                   \
  PLAIN(49, rms_decryption_failed_error)
