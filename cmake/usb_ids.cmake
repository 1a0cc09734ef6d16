# SPDX-License-Identifier: MIT
# Validates GWQ_USB_IDS and splits it for the generated table.
list(LENGTH GWQ_USB_IDS gwq_usb_id_count)
if(NOT gwq_usb_id_count EQUAL 2)
  message(FATAL_ERROR "GWQ_USB_IDS must name two identities, such as 1209:0001;1209:0002")
endif()
set(gwq_usb_index 0)
foreach(gwq_usb_id IN LISTS GWQ_USB_IDS)
  if(NOT gwq_usb_id MATCHES "^([0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f]):([0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f])$")
    message(FATAL_ERROR "GWQ_USB_IDS: '${gwq_usb_id}' is not vendor:product in four hexadecimal digits each")
  endif()
  set(GWQ_VID_${gwq_usb_index} "0x${CMAKE_MATCH_1}")
  set(GWQ_PID_${gwq_usb_index} "0x${CMAKE_MATCH_2}")
  math(EXPR gwq_usb_index "${gwq_usb_index} + 1")
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/usb_ids.h.in
               ${PROJECT_BINARY_DIR}/generated/usb_ids.h @ONLY)
