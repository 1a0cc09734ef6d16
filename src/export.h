/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Linkage of everything that libgwq.so exports: plain C names.
 */
#ifndef GWQ_EXPORT_H
#define GWQ_EXPORT_H

#ifdef __cplusplus
#define GWQ_C_BEGIN extern "C" {
#define GWQ_C_END }
#else
#define GWQ_C_BEGIN
#define GWQ_C_END
#endif

#define GWQ_API __attribute__((visibility("default")))

#endif
