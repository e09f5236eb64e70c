// A plugin for the linter: checks look at the project's own declarations alone, not at those of every header of the
// standard library, of Qt and the like, which they would walk through again for each source and find nothing in.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/AST/Decl.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/CompilerInstance.h>
#include <clang/Frontend/FrontendAction.h>
#include <clang/Frontend/FrontendPluginRegistry.h>
#include <memory>
#include <string>
#include <vector>

namespace {

class Narrowing : public clang::ASTConsumer {
 public:
  void HandleTranslationUnit(clang::ASTContext& context) override {
    std::vector<clang::Decl*> own;
    for (clang::Decl* const declaration : context.getTranslationUnitDecl()->decls())
      if (!context.getSourceManager().isInSystemHeader(declaration->getLocation())) own.push_back(declaration);
    context.setTraversalScope(own);
  }
};

class NarrowingAction : public clang::PluginASTAction {
 protected:
  std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance&, llvm::StringRef) override {
    return std::make_unique<Narrowing>();
  }
  bool ParseArgs(const clang::CompilerInstance&, const std::vector<std::string>&) override { return true; }
  ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<NarrowingAction> kRegistered("own-declarations",
                                                                      "check own declarations alone");

}  // namespace
