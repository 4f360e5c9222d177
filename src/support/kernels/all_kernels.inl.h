// Every kernel, and the table of them. Included by one source per instruction set, which names the table.
#pragma once

#include "support/kernels/block_marks.inl.h"
#include "support/kernels/contrast_rows.inl.h"
#include "support/kernels/edge_pairing.inl.h"
#include "support/kernels/kernels.h"
#include "support/kernels/line_rating.inl.h"
#include "support/kernels/ridge_rows.inl.h"
#include "support/kernels/weighted_moments.inl.h"

namespace weld {
namespace {

constexpr TKernels kAllKernels{
    {markBlocks, pairStripeEdges},
    {rows::pairColumns, rows::addRows, rows::halveSums, rows::halveSumsAndColumns, rows::respond, rows::findMaxima,
     rows::correlate},
    {zelFit::sumTruncatedQuadratics},
    {contrast::sumEight, contrast::meanOfTwo, contrast::respondDark, contrast::respondBright,
     contrast::respondEdge, contrast::highest, contrast::sumMagnitudes, contrast::rate, contrast::advance},
    {moments::sumNear}};

}  // namespace
}  // namespace weld
