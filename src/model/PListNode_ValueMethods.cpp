// Value classes: converting typed values and class changes, and the renditions.
#include "PListNode.h"

void PListNode::setValue(const PropertyList &) {}
bool PListNode::setMenu(int) { return false; }
QString PListNode::stringValue() const { return QString(); }
QString PListNode::classTitle(int) { return QString(); }
QString PListNode::displayName() const { return QString(); }
QString PListNode::countedText() const { return QString(); }
RenditionStyle PListNode::style(Rendition, const RenditionSettings &, bool) const { return {}; }
