# Headers, library, command, and what other projects need to find them.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zelkor_ast EXPORT zelkor_astTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                                                    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(headers IN ITEMS kernel/include model/include ast/include binding/include script/quorl/include)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${headers}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          FILES_MATCHING PATTERN "*.hpp" PATTERN "*.ipp")
endforeach()
install(DIRECTORY ${zelkor_kernel_meta_INCLUDE}/ ${zelkor_model_INCLUDE}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET zelkor)
  install(TARGETS zelkor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT zelkor_astTargets NAMESPACE zelkor:: FILE zelkor_astTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelkor_ast)
set_target_properties(zelkor_ast PROPERTIES EXPORT_NAME ast)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/zelkor_astConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/zelkor_astConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelkor_ast)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zelkor_astConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelkor_astConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/zelkor_astConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelkor_ast)

# Told from where the file lies, so that `cmake --install --prefix` and a moved tree give the right folders.
file(RELATIVE_PATH ZELKOR_PREFIX_OF_PC /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/zelkor-ast.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zelkor-ast.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelkor-ast.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
