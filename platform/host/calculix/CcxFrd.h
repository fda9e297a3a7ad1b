#pragma once
// The solver's result file (.frd) as the host reads it: the model's header lines, its mesh and
// the result blocks of every step, increment and mode, with their ranges.
//
// Only the ASCII form is read (short and long number formats); a file written in the binary
// form is refused. Every value of a block is a float array over the file's nodes, indexed
// like mesh.nodeNumbers; a node the block does not list has NaN there.
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host/calculix/CcxError.h"
#include "platform/host/calculix/CcxMesh.h"

namespace ccx {

// The lowest and highest value of a field with the node (number) it occurs at; NaN and node 0
// when the field has no value at all. NaN values do not count.
struct FrdRange {
  float min = std::numeric_limits<float>::quiet_NaN();
  float max = std::numeric_limits<float>::quiet_NaN();
  int minNode = 0;
  int maxNode = 0;
  std::size_t count = 0;  // nodes with a value
};

struct FrdField {
  std::string name;       // "D1", "SXX", ...; "MISES" and "MAG" for the derived ones
  int type = 0;           // the component's type in the file: 1 scalar, 2 vector, 4 tensor, ...; 0 derived
  bool derived = false;
  std::vector<float> values;  // per node index
  FrdRange range;
};

// The analysis type of a block header.
enum class FrdAnalysis : int { Static = 0, TimeStep = 1, Frequency = 2, LoadStep = 3, UserNamed = 4, Other = -1 };

struct FrdBlock {
  std::int64_t line = 0;   // the line of the block's header
  int step = 0;            // the step, increment and mode announced before the block
  int increment = 0;
  int mode = 0;            // 0 outside frequency and buckling steps
  double value = 0;        // the time of static and transient steps, the frequency (cycles per
                           // time) of a mode, the buckling factor of a buckling mode
  FrdAnalysis analysis = FrdAnalysis::Static;
  int analysisCode = 0;    // the type code as written
  std::string analysisName;  // "MODAL", ... as written (often blank)
  std::string name;        // the dataset: "DISP", "STRESS", "TOSTRAIN", "NDTEMP", "FORC", ...
  std::size_t componentCount = 0;  // fields[0, componentCount) are the file's components in
                                   // its order; a derived field may follow
  std::vector<FrdField> fields;
  std::size_t listedNodes = 0;     // the nodes the block lists

  const FrdField* Field(std::string_view fieldName) const;
  // The von Mises value of a tensor block (equivalent strain for strains) or the magnitude of
  // a vector block; null for other blocks.
  const FrdField* Derived() const;
};

struct FrdHeaderLine {
  std::string key;    // "DATE", "VERSION", ...: the first word of a "1U" line
  std::string value;  // the rest, trimmed
};

struct FrdMaterial {
  int number = 0;
  std::string name;
};

struct FrdFile {
  std::string path;
  std::string modelName;   // what follows "1C" (often empty)
  std::string title;       // the deck's heading: the first user line when it is not one of the
                           // solver's keyed lines (USER, DATE, ...)
  std::vector<FrdHeaderLine> header;
  std::vector<FrdMaterial> materials;
  // Element types are named as in the file ("HE8", "HE20", "PE15", "TE10", ...). The nodes of
  // an element are in the solver's deck order for its type: the file's own order of the 20-node
  // brick (13-16 on the vertical edges) and of the 15-node wedge (10-12 on the vertical edges)
  // is turned back into the deck's (13-16 and 10-12 on the top face, the vertical edges last).
  Mesh mesh;
  NodeIndex nodeIndex;
  std::vector<int> elementMaterials;  // per element, the material number of the file
  std::vector<FrdBlock> blocks;       // in file order

  // The blocks of a dataset ("DISP"), in file order.
  std::vector<const FrdBlock*> Blocks(std::string_view name) const;
  // The last block of a dataset in a step (any step: step 0), null when there is none.
  const FrdBlock* Last(std::string_view name, int step = 0) const;
};

// Reads a .frd file; throws ReadError for what it cannot read.
FrdFile ReadFrd(const std::string& path);
// Reads the text of a .frd file; `name` stands for the file in messages.
FrdFile ReadFrdText(std::string_view text, const std::string& name = "<frd>");

}  // namespace ccx
